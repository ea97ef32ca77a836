#include "providers/workbook/MeasureSheet.h"

#include <algorithm>

namespace NSTQ::Providers {

SUsedRange MeasureSheet(ICellSource& cells, CColumnTypes& types) {
    SUsedRange used;
    SCellRange range = {{maxRow, maxColumn}, {}};
    std::uint32_t row = 0;
    SCell cell = {};
    while (cells.Next(cell)) {
        if (cell.position.row != row) {
            types.EnterRow(cell.position.row, row == 0);
            used.isOrdered = used.isOrdered && cell.position.row > row;
            row = cell.position.row;
            range.first.row = std::min(range.first.row, row);
            range.last.row = std::max(range.last.row, row);
        }
        range.first.column = std::min(range.first.column, cell.position.column);
        range.last.column = std::max(range.last.column, cell.position.column);
        types.Take(cell);
    }
    used.isEmpty = row == 0;
    used.range = range;
    return used;
}

} // namespace NSTQ::Providers
