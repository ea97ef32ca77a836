#include "providers/access/SCNameOrder.h"

#include "platform/codepage/AsciiCase.h"
#include "platform/codepage/LetterCase.h"

#include <algorithm>
#include <compare>

namespace NSTQ::Providers {

namespace {

char32_t ToSmall(char16_t unit) {
    return unit < 0x80 ? Platform::ToAsciiLower(unit) : Platform::ToSmallLetter(unit);
}

} // namespace

int SCNameOrder::Compare(std::u16string_view left, std::u16string_view right) {
    const auto order = std::lexicographical_compare_three_way(
        left.begin(), left.end(), right.begin(), right.end(),
        [](char16_t one, char16_t other) { return ToSmall(one) <=> ToSmall(other); });
    return std::is_lt(order) ? -1 : std::is_gt(order) ? 1 : 0;
}

} // namespace NSTQ::Providers
