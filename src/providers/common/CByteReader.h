// Takes little-endian numbers and runs of bytes from a block one after the other. Past the end it gives zeros and
// says so afterwards, so that a header is read without a check after each field.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <span>

namespace NSTQ::Providers {

class CByteReader {
public:
    explicit CByteReader(std::span<const unsigned char> bytes) : m_oBytes(bytes) {}

    template <std::unsigned_integral T>
    T Take() {
        T value = 0;
        std::size_t shift = 0;
        for (const unsigned char byte : TakeBytes(sizeof(T))) {
            value = static_cast<T>(value | static_cast<T>(byte) << shift);
            shift += 8;
        }
        return value;
    }
    std::span<const unsigned char> TakeBytes(std::size_t count) {
        m_bGood = m_bGood && count <= m_oBytes.size();
        const auto taken = m_oBytes.first(std::min(count, m_oBytes.size()));
        m_oBytes = m_oBytes.subspan(taken.size());
        return taken;
    }
    void Skip(std::size_t count) { TakeBytes(count); }

    std::size_t Left() const { return m_oBytes.size(); }
    /// False when more was taken than there is.
    bool IsGood() const { return m_bGood; }

private:
    std::span<const unsigned char> m_oBytes;
    bool m_bGood = true;
};

} // namespace NSTQ::Providers
