#include "providers/access/SCNameOrder.h"

#include "platform/codepage/AsciiCase.h"

#include <algorithm>
#include <compare>

namespace NSTQ::Providers {

namespace {

/// Capitals whose small forms are at a distance, or, with distance 1, alternate with them.
struct SCapitals {
    char16_t first;
    char16_t last;
    char16_t distance;
};
constexpr SCapitals capitals[] = {
    {0x00C0, 0x00D6, 32}, {0x00D8, 0x00DE, 32}, {0x0100, 0x012F, 1},  {0x0132, 0x0137, 1},  {0x014A, 0x0177, 1},
    {0x0391, 0x03A1, 32}, {0x03A3, 0x03AB, 32}, {0x0400, 0x040F, 80}, {0x0410, 0x042F, 32}, {0x0460, 0x0481, 1},
    {0x048A, 0x04BF, 1},  {0x1E00, 0x1E95, 1},  {0x1EA0, 0x1EFF, 1},  {0xFF21, 0xFF3A, 32},
};

char16_t ToSmall(char16_t unit) {
    if (unit < 0x80)
        return Platform::ToAsciiLower(unit);
    for (const SCapitals& range : capitals) {
        if (unit >= range.first && unit <= range.last)
            return static_cast<char16_t>(range.distance == 1 ? unit | 1 : unit + range.distance);
    }
    // Those of the alternating letters whose capitals have odd numbers.
    if ((unit >= 0x0139 && unit <= 0x0147) || (unit >= 0x0179 && unit <= 0x017D))
        return static_cast<char16_t>(unit + (unit & 1));
    return unit;
}

} // namespace

int SCNameOrder::Compare(std::u16string_view left, std::u16string_view right) {
    const auto order = std::lexicographical_compare_three_way(
        left.begin(), left.end(), right.begin(), right.end(),
        [](char16_t one, char16_t other) { return ToSmall(one) <=> ToSmall(other); });
    return std::is_lt(order) ? -1 : std::is_gt(order) ? 1 : 0;
}

} // namespace NSTQ::Providers
