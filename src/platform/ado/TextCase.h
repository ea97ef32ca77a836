// Comparison of names ignoring the case of ASCII letters.
#pragma once

#include <algorithm>
#include <string_view>

namespace NSTQ::Platform {

template <class TUnit>
constexpr TUnit ToAsciiLower(TUnit unit) {
    return unit >= 'A' && unit <= 'Z' ? static_cast<TUnit>(unit - 'A' + 'a') : unit;
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
