// Numbers as all of these files store them, the lowest byte first: single ones, and one after another from a block.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>

namespace NSTQ::Providers {

inline std::uint16_t ReadU16(const unsigned char* bytes) {
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

inline std::uint32_t ReadU32(const unsigned char* bytes) {
    return ReadU16(bytes) | static_cast<std::uint32_t>(ReadU16(bytes + 2)) << 16;
}

inline std::uint64_t ReadU64(const unsigned char* bytes) {
    return ReadU32(bytes) | static_cast<std::uint64_t>(ReadU32(bytes + 4)) << 32;
}

/// Takes numbers and runs of bytes from a block one after the other. Past the end it gives zeros and says so
/// afterwards, so that a header is read without a check after each field.
class CByteReader {
public:
    explicit CByteReader(std::span<const unsigned char> bytes) : m_bytes(bytes) {}

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
        m_isGood = m_isGood && count <= m_bytes.size();
        const auto taken = m_bytes.first(std::min(count, m_bytes.size()));
        m_bytes = m_bytes.subspan(taken.size());
        return taken;
    }
    void Skip(std::size_t count) { TakeBytes(count); }

    std::size_t Left() const { return m_bytes.size(); }
    /// False when more was read than there is.
    bool IsGood() const { return m_isGood; }

private:
    std::span<const unsigned char> m_bytes;
    bool m_isGood = true;
};

} // namespace NSTQ::Providers
