#include "providers/workbook/SCCellReference.h"

#include <algorithm>
#include <string>

namespace NSTQ::Providers {

std::optional<SCellRange> SCCellReference::ParseRange(std::string_view text) {
    const std::size_t colon = text.find(':');
    std::string corners[2] = {std::string(text.substr(0, colon)),
                              std::string(colon == std::string_view::npos ? text : text.substr(colon + 1))};
    SCellRange range;
    SCellPosition* const positions[2] = {&range.first, &range.last};
    bool hasColumn[2] = {};
    bool hasRow[2] = {};
    for (int i : {0, 1}) {
        std::string& corner = corners[i];
        std::erase(corner, '$');
        hasColumn[i] = !corner.empty() && IsLetter(corner.front());
        hasRow[i] = !corner.empty() && !IsLetter(corner.back());
        // The missing part of a whole row or column is filled in for the parser and extended below.
        if (!hasRow[i])
            corner += '1';
        if (!hasColumn[i])
            corner.insert(0, 1, 'A');
        const std::optional<SCellPosition> position = ParseCell(corner);
        if (!position || (!hasRow[i] && !hasColumn[i]))
            return std::nullopt;
        *positions[i] = *position;
    }
    const bool isWhole = !hasRow[0] || !hasColumn[0];
    if (hasRow[0] != hasRow[1] || hasColumn[0] != hasColumn[1] || (isWhole && colon == std::string_view::npos))
        return std::nullopt;
    if (range.first.row > range.last.row)
        std::swap(range.first.row, range.last.row);
    if (range.first.column > range.last.column)
        std::swap(range.first.column, range.last.column);
    if (!hasRow[0])
        range.last.row = maxRow;
    if (!hasColumn[0])
        range.last.column = maxColumn;
    return range;
}

} // namespace NSTQ::Providers
