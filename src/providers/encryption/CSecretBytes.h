// A key or digest: up to 64 bytes in place, wiped when they are destroyed.
#pragma once

#include <array>
#include <cstddef>
#include <span>

namespace NSTQ::Providers {

/// Overwrites bytes in a way that the compiler does not optimise away.
void Wipe(std::span<unsigned char> bytes);

class CSecretBytes {
public:
    static constexpr std::size_t maxSize = 64;

    /// `size` bytes (at most maxSize), each of them `fill`.
    constexpr explicit CSecretBytes(std::size_t size, unsigned char fill = 0) : m_size(size) { m_bytes.fill(fill); }
    CSecretBytes(const CSecretBytes&) = default;
    CSecretBytes& operator=(const CSecretBytes&) = default;
    ~CSecretBytes() { Wipe(m_bytes); }

    std::size_t Size() const { return m_size; }
    std::span<unsigned char> Bytes() { return std::span(m_bytes).first(m_size); }
    std::span<const unsigned char> Bytes() const { return std::span(m_bytes).first(m_size); }
    /// The first `size` bytes; where there are fewer, the rest is `fill`.
    CSecretBytes Resized(std::size_t size, unsigned char fill) const;

private:
    std::array<unsigned char, maxSize> m_bytes;
    std::size_t m_size;
};

} // namespace NSTQ::Providers
