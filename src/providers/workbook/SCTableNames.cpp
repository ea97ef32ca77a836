#include "providers/workbook/SCTableNames.h"

#include <algorithm>

namespace NSTQ::Providers {

namespace {

struct SUnitRange {
    char16_t first;
    char16_t last;
};
/// Characters beyond ASCII that are not letters. Superfluous quotes are harmless, so whole blocks suffice.
constexpr SUnitRange signRanges[] = {
    {0x0080, 0x00A9}, {0x00AB, 0x00B4}, {0x00B6, 0x00B9}, {0x00BB, 0x00BF}, {0x00D7, 0x00D7}, {0x00F7, 0x00F7},
    {0x2000, 0x206F}, {0x20A0, 0x20CF}, {0x2190, 0x2BFF}, {0x2E00, 0x2E7F}, {0x3000, 0x3004}, {0x3008, 0x3020},
    {0x3030, 0x3030}, {0xD800, 0xF8FF}, {0xFE10, 0xFE1F}, {0xFE30, 0xFE6F}, {0xFF01, 0xFF0F}, {0xFF1A, 0xFF20},
    {0xFF3B, 0xFF40}, {0xFF5B, 0xFF65}, {0xFFE0, 0xFFFF},
};

bool IsDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

bool IsPlain(char16_t unit) {
    if (unit < 0x80)
        return IsDigit(unit) || unit == u'_' || ((unit | 0x20) >= u'a' && (unit | 0x20) <= u'z');
    return std::none_of(std::begin(signRanges), std::end(signRanges),
                        [unit](const SUnitRange& range) { return unit >= range.first && unit <= range.last; });
}

std::u16string DoubleQuotes(std::u16string_view text) {
    std::u16string doubled;
    for (const char16_t unit : text)
        doubled.append(unit == u'\'' ? 2 : 1, unit);
    return doubled;
}

} // namespace

std::u16string SCTableNames::NameOfSheet(std::u16string_view sheet) {
    const bool isPlain =
        !sheet.empty() && !IsDigit(sheet.front()) && std::all_of(sheet.begin(), sheet.end(), IsPlain);
    return isPlain ? std::u16string(sheet) + u"$" : u"'" + DoubleQuotes(sheet) + u"$'";
}

std::u16string SCTableNames::NameOfRange(const IWorkbook& workbook, const SNamedRange& range) {
    if (!range.isOfSheet)
        return range.name;
    return NameOfSheet(workbook.GetSheetNames()[range.sheet]) + range.name;
}

std::map<std::u16string, std::size_t, std::less<>> SCTableNames::IndexSheets(const IWorkbook& workbook) {
    std::map<std::u16string, std::size_t, std::less<>> index;
    const auto& sheets = workbook.GetSheetNames();
    // Existing entries stay.
    for (std::size_t i = 0; i < sheets.size(); ++i)
        index.emplace(NameOfSheet(sheets[i]), i);
    for (std::size_t i = 0; i < sheets.size(); ++i)
        index.emplace(DoubleQuotes(sheets[i]) + u"$", i);
    for (std::size_t i = 0; i < sheets.size(); ++i)
        index.emplace(sheets[i] + u"$", i);
    return index;
}

std::optional<std::size_t> SCTableNames::FindRange(const IWorkbook& workbook, std::u16string_view table) {
    const auto& names = workbook.GetNames();
    const auto found = std::find_if(names.begin(), names.end(),
                                    [&](const SNamedRange& range) { return NameOfRange(workbook, range) == table; });
    return found == names.end() ? std::nullopt : std::optional(static_cast<std::size_t>(found - names.begin()));
}

} // namespace NSTQ::Providers
