// Bytes as file formats have them, for what writes files in tests.
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

} // namespace NSTQ::Tests
