// The pass over a sheet before its rows are returned: their number and the types of the columns.
#pragma once

#include "providers/workbook/CColumnTypes.h"

namespace NSTQ::Providers {

/// The range of the values of a sheet.
struct SUsedRange {
    bool isEmpty = true;
    bool isOrdered = true; ///< no cell comes after one of a later row
    SCellRange range;
};

/// Reads all cells, which `types` takes. There is no other way to determine the used range: what a sheet states is
/// often wrong.
SUsedRange MeasureSheet(ICellSource& cells, CColumnTypes& types);

} // namespace NSTQ::Providers
