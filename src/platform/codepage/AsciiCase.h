// The case of ASCII letters, and comparison of names ignoring it.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace NSTQ::Platform {

template <class TUnit>
constexpr TUnit ToAsciiLower(TUnit unit) {
    return unit >= 'A' && unit <= 'Z' ? static_cast<TUnit>(unit - 'A' + 'a') : unit;
}

/// A copy with small letters.
template <class TUnit>
std::basic_string<TUnit> ToAsciiLowerText(std::basic_string<TUnit> text) {
    std::ranges::transform(text, text.begin(), ToAsciiLower<TUnit>);
    return text;
}

template <class TUnit>
constexpr bool IsEqualIgnoringCaseOf(std::basic_string_view<TUnit> left, std::basic_string_view<TUnit> right) {
    return std::ranges::equal(left, right, {}, ToAsciiLower<TUnit>, ToAsciiLower<TUnit>);
}

constexpr bool IsEqualIgnoringCase(std::string_view left, std::string_view right) {
    return IsEqualIgnoringCaseOf(left, right);
}

constexpr bool IsEqualIgnoringCase(std::u16string_view left, std::u16string_view right) {
    return IsEqualIgnoringCaseOf(left, right);
}

} // namespace NSTQ::Platform
