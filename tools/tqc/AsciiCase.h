// The case of ASCII letters.
#pragma once

#include <algorithm>
#include <string>

namespace NSTQ::Tool {

constexpr char ToAsciiLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

constexpr char ToAsciiUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

/// A copy with small letters.
inline std::string ToAsciiLowerText(std::string text) {
    std::ranges::transform(text, text.begin(), ToAsciiLower);
    return text;
}

} // namespace NSTQ::Tool
