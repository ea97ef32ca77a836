#include "providers/encryption/CAesCounterCipher.h"

#include <algorithm>

namespace NSTQ::Providers {

void CAesCounterCipher::FillStream() {
    m_stream.fill(0);
    for (std::size_t at = 0; at < streamSize; at += CAesCipher::blockSize) {
        ++m_block;
        for (std::size_t i = 0; i < sizeof m_block; ++i)
            m_stream[at + i] = static_cast<unsigned char>(m_block >> 8 * i);
    }
    m_cipher.Apply({}, m_stream);
    m_used = 0;
}

void CAesCounterCipher::Decrypt(std::span<unsigned char> bytes) {
    while (!bytes.empty()) {
        if (m_used == streamSize)
            FillStream();
        const std::size_t count = std::min(bytes.size(), streamSize - m_used);
        for (std::size_t i = 0; i < count; ++i)
            bytes[i] ^= m_stream[m_used + i];
        m_used += count;
        bytes = bytes.subspan(count);
    }
}

} // namespace NSTQ::Providers
