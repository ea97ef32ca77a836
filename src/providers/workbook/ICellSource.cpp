#include "providers/workbook/ICellSource.h"

#include <algorithm>

namespace NSTQ::Providers {

SUsedRange MeasureSheet(ICellSource& cells) {
    SUsedRange used;
    used.range.first = {maxRow, maxColumn};
    std::uint32_t lastRow = 0;
    SCell cell = {};
    while (cells.Next(cell)) {
        SCellRange& range = used.range;
        const auto [row, column] = cell.position;
        used.isEmpty = false;
        used.isOrdered = used.isOrdered && row >= lastRow;
        lastRow = row;
        range.first = {std::min(range.first.row, row), std::min(range.first.column, column)};
        range.last = {std::max(range.last.row, row), std::max(range.last.column, column)};
    }
    return used;
}

} // namespace NSTQ::Providers
