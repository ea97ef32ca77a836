#include "platform/codepage/LetterCase.h"

#include <algorithm>
#include <iterator>

namespace NSTQ::Platform {

namespace {

/// Capitals: the first of every `step` characters from `first` to `last`; the small letters are `distance` after
/// them.
struct SCapitals {
    char32_t first;
    char32_t last;
    char32_t step;
    char32_t distance;
};
/// In ascending order.
constexpr SCapitals capitals[] = {
    {U'A', U'Z', 1, 0x20},     {0xC0, 0xD6, 1, 0x20},     {0xD8, 0xDE, 1, 0x20},   {0x100, 0x12E, 2, 1},
    {0x132, 0x136, 2, 1},      {0x139, 0x147, 2, 1},      {0x14A, 0x176, 2, 1},    {0x179, 0x17D, 2, 1},
    {0x1CD, 0x1DB, 2, 1},      {0x1DE, 0x1EE, 2, 1},      {0x1F8, 0x21E, 2, 1},    {0x386, 0x386, 1, 0x26},
    {0x388, 0x38A, 1, 0x25},   {0x38C, 0x38C, 1, 0x40},   {0x38E, 0x38F, 1, 0x3F}, {0x391, 0x3A1, 1, 0x20},
    {0x3A3, 0x3AB, 1, 0x20},   {0x3C2, 0x3C2, 1, 1},      {0x400, 0x40F, 1, 0x50}, {0x410, 0x42F, 1, 0x20},
    {0x460, 0x480, 2, 1},      {0x48A, 0x4BE, 2, 1},      {0x4C1, 0x4CD, 2, 1},    {0x4D0, 0x52E, 2, 1},
    {0x531, 0x556, 1, 0x30},   {0x1E00, 0x1E94, 2, 1},    {0x1EA0, 0x1EFE, 2, 1},  {0x2160, 0x216F, 1, 0x10},
    {0x24B6, 0x24CF, 1, 0x1A}, {0xFF21, 0xFF3A, 1, 0x20},
};

} // namespace

char32_t ToSmallLetter(char32_t letter) {
    const auto* const range = std::ranges::lower_bound(capitals, letter, {}, &SCapitals::last);
    const bool isCapital =
        range != std::end(capitals) && letter >= range->first && (letter - range->first) % range->step == 0;
    return isCapital ? letter + range->distance : letter;
}

} // namespace NSTQ::Platform
