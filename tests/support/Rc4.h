// The cipher RC4, for what writes encrypted files in tests.
#pragma once

#include <numeric>
#include <string>
#include <string_view>
#include <utility>

namespace NSTQ::Tests {

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
