// Bytes as file formats have them, for what writes files in tests, and texts that repeat.
#pragma once

#include <cstddef>
#include <cstdint>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>

namespace NSTQ::Tests {

/// `width` bytes of a number, the lowest first; those that it does not have are 0.
inline std::string LittleEndian(std::uint64_t value, std::size_t width) {
    std::string bytes;
    for (std::size_t i = 0; i < width; ++i)
        bytes += static_cast<char>(i < sizeof value ? value >> (8 * i) & 0xFF : 0);
    return bytes;
}

/// Bytes without a pattern, always the same.
inline std::string Noise(std::size_t size, std::uint32_t seed = 1) {
    std::string noise(size, '\0');
    for (char& byte : noise)
        byte = static_cast<char>((seed = seed * 1664525 + 1013904223) >> 24);
    return noise;
}

/// Encrypts or decrypts.
inline std::string Rc4(std::string_view key, std::string text) {
    std::string s(256, '\0');
    std::iota(s.begin(), s.end(), '\0');
    const auto at = [&](unsigned i) -> unsigned { return static_cast<unsigned char>(s[i & 255]); };
    for (unsigned i = 0, j = 0; i < 256; ++i)
        std::swap(s[i], s[j = (j + at(i) + static_cast<unsigned char>(key[i % key.size()])) & 255]);
    unsigned i = 0, j = 0;
    for (char& c : text) {
        ++i;
        std::swap(s[i & 255], s[j = (j + at(i)) & 255]);
        c = static_cast<char>(c ^ s[(at(i) + at(j)) & 255]);
    }
    return text;
}

inline std::string Repeat(std::string_view text, std::size_t count) {
    std::string repeated;
    repeated.reserve(text.size() * count);
    while (count-- > 0)
        repeated += text;
    return repeated;
}

/// What `make` returns for each number from 0.
template <class TMake>
std::string Repeat(TMake make, std::size_t count) requires requires {
    make(count);
}
{
    std::string repeated;
    for (std::size_t i = 0; i < count; ++i)
        repeated += make(i);
    return repeated;
}

} // namespace NSTQ::Tests
