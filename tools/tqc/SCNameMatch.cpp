#include "SCNameMatch.h"

#include "tqcAccess/CodePage.h"

#include <algorithm>
#include <iterator>

namespace NSTQ::Tool {
namespace {

/// Every `step`-th character from `first` to `last` has its folded form `distance` further on.
struct SFolding {
    char16_t first;
    char16_t last;
    int step;
    int distance;
};

/// Sorted by their last characters.
constexpr SFolding foldings[] = {
    {0x0041, 0x005A, 1, 32},   {0x00B5, 0x00B5, 1, 775},   {0x00C0, 0x00D6, 1, 32},   {0x00D8, 0x00DE, 1, 32},
    {0x0100, 0x012E, 2, 1},    {0x0132, 0x0136, 2, 1},     {0x0139, 0x0147, 2, 1},    {0x014A, 0x0176, 2, 1},
    {0x0178, 0x0178, 1, -121}, {0x0179, 0x017D, 2, 1},     {0x017F, 0x017F, 1, -268}, {0x0370, 0x0372, 2, 1},
    {0x0376, 0x0376, 1, 1},    {0x037F, 0x037F, 1, 116},   {0x0386, 0x0386, 1, 38},   {0x0388, 0x038A, 1, 37},
    {0x038C, 0x038C, 1, 64},   {0x038E, 0x038F, 1, 63},    {0x0391, 0x03A1, 1, 32},   {0x03A3, 0x03AB, 1, 32},
    {0x03C2, 0x03C2, 1, 1},    {0x03CF, 0x03CF, 1, 8},     {0x03D0, 0x03D0, 1, -30},  {0x03D1, 0x03D1, 1, -25},
    {0x03D5, 0x03D5, 1, -15},  {0x03D6, 0x03D6, 1, -22},   {0x03D8, 0x03EE, 2, 1},    {0x03F0, 0x03F0, 1, -54},
    {0x03F1, 0x03F1, 1, -48},  {0x03F4, 0x03F4, 1, -60},   {0x03F5, 0x03F5, 1, -64},  {0x03F7, 0x03F7, 1, 1},
    {0x03F9, 0x03F9, 1, -7},   {0x03FA, 0x03FA, 1, 1},     {0x03FD, 0x03FF, 1, -130}, {0x0400, 0x040F, 1, 80},
    {0x0410, 0x042F, 1, 32},   {0x0460, 0x0480, 2, 1},     {0x048A, 0x04BE, 2, 1},    {0x04C0, 0x04C0, 1, 15},
    {0x04C1, 0x04CD, 2, 1},    {0x04D0, 0x052E, 2, 1},     {0x0531, 0x0556, 1, 48},   {0x1E00, 0x1E94, 2, 1},
    {0x1E9B, 0x1E9B, 1, -58},  {0x1E9E, 0x1E9E, 1, -7615}, {0x1EA0, 0x1EFE, 2, 1},    {0xFF21, 0xFF3A, 1, 32}};

char16_t FoldUnit(char16_t unit) {
    const auto* const found =
        std::lower_bound(std::begin(foldings), std::end(foldings), unit,
                         [](const SFolding& entry, char16_t value) { return entry.last < value; });
    const bool isFolded =
        found != std::end(foldings) && unit >= found->first && (unit - found->first) % found->step == 0;
    return isFolded ? static_cast<char16_t>(unit + found->distance) : unit;
}

bool IsLowSurrogate(std::u16string_view text, std::size_t at) {
    return at < text.size() && (text[at] & 0xFC00) == 0xDC00;
}

/// Takes at most the product of both lengths: only the last '*' before a difference is tried again.
bool Matches(std::u16string_view name, std::u16string_view pattern) {
    constexpr std::size_t none = std::u16string_view::npos;
    std::size_t at = 0;
    std::size_t atStar = 0; ///< in the name: the end of what the last '*' stands for
    std::size_t star = none;
    for (std::size_t i = 0; at < name.size() || i < pattern.size();) {
        if (i < pattern.size() && pattern[i] == u'*') {
            star = i++;
            atStar = at;
        } else if (i < pattern.size() && at < name.size() && (pattern[i] == u'?' || pattern[i] == name[at])) {
            at += pattern[i] == u'?' && IsLowSurrogate(name, at + 1) ? 2 : 1;
            ++i;
        } else if (star != none && atStar < name.size()) {
            at = ++atStar;
            i = star + 1;
        } else {
            return false;
        }
    }
    return true;
}

} // namespace

std::u16string SCNameMatch::Fold(std::string_view name) {
    const int length = static_cast<int>(name.size());
    std::u16string folded(name.size(), u'\0');
    const int units = Platform::MultiByteToWideChar(Platform::CP_UTF8, 0, name.data(), length, folded.data(), length);
    folded.resize(static_cast<std::size_t>(units));
    std::ranges::transform(folded, folded.begin(), FoldUnit);
    return folded;
}

std::vector<std::size_t> SCNameMatch::Find(const std::vector<std::string>& names, std::string_view wanted) {
    const auto exact = std::ranges::find(names, wanted);
    if (exact != names.end())
        return {static_cast<std::size_t>(exact - names.begin())};
    const std::u16string folded = Fold(wanted);
    std::vector<std::size_t> found;
    std::vector<std::size_t> matching;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::u16string name = Fold(names[i]);
        if (name == folded)
            found.push_back(i);
        if (IsPattern(wanted) && Matches(name, folded))
            matching.push_back(i);
    }
    return found.empty() ? matching : found;
}

} // namespace NSTQ::Tool
