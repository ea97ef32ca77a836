#include "providers/encryption/CRc4.h"

#include <numeric>
#include <utility>

namespace NSTQ::Providers {

CRc4::CRc4(std::span<const unsigned char> key) {
    std::iota(m_state.begin(), m_state.end(), static_cast<unsigned char>(0));
    unsigned other = 0;
    for (unsigned i = 0; i < m_state.size(); ++i) {
        other = (other + m_state[i] + key[i % key.size()]) & 0xFF;
        std::swap(m_state[i], m_state[other]);
    }
}

inline unsigned char CRc4::Next() {
    m_first = static_cast<unsigned char>(m_first + 1);
    m_second = static_cast<unsigned char>(m_second + m_state[m_first]);
    std::swap(m_state[m_first], m_state[m_second]);
    return m_state[(m_state[m_first] + m_state[m_second]) & 0xFF];
}

void CRc4::Apply(std::span<unsigned char> bytes) {
    for (unsigned char& byte : bytes)
        byte ^= Next();
}

void CRc4::Skip(std::size_t count) {
    while (count-- > 0)
        Next();
}

} // namespace NSTQ::Providers
