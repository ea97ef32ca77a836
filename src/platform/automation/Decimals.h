// Texts, decimal digits two at a time, and rounding to the nearest integer without a call.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace NSTQ::Platform {

/// The digits of 0 to 99, two for each.
inline constexpr std::array<char, 200> twoDigits = [] {
    std::array<char, 200> digits{};
    for (unsigned i = 0; i < 100; ++i) {
        digits[2 * i] = static_cast<char>('0' + i / 10);
        digits[2 * i + 1] = static_cast<char>('0' + i % 10);
    }
    return digits;
}();

/// Writes a number below 100 with two digits and returns their end.
inline char* PutTwoDigits(char* to, unsigned value) {
    std::memcpy(to, twoDigits.data() + 2 * value, 2);
    return to + 2;
}

/// Writes a text, which may be empty and null, and returns its end.
inline char* PutText(char* to, std::string_view text) {
    return std::copy(text.begin(), text.end(), to);
}

/// `value`, which is not negative and fits, with halves rounded up. Adding one half to it instead might round the
/// sum.
inline std::int64_t RoundToInteger(double value) {
    const auto whole = static_cast<std::int64_t>(value);
    return whole + (value - static_cast<double>(whole) >= 0.5 ? 1 : 0);
}

} // namespace NSTQ::Platform
