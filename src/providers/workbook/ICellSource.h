// The cells of a sheet that hold a value, one after another.
#pragma once

#include "providers/workbook/SCCellReference.h"

namespace NSTQ::Providers {

/// What a cell holds, and which member of SCell says it: each kind of file hands its values on as it stores them, and
/// they are converted only when they are asked for.
enum class ECellKind : unsigned char {
    Number,       ///< `number`
    NumberDigits, ///< a number, in words
    Shared,       ///< `index` is that of a shared text
    SharedDigits, ///< the same, in words
    Text,         ///< with escapes of units that XML cannot carry
    WideText,     ///< `text` holds the bytes of UTF-16 units as they lie in memory
    Error,
    Boolean, ///< "1" or "0", "true" or "false"
    IsoDate,
};

struct SCell {
    SCellPosition position;
    ECellKind kind;
    std::uint32_t style;
    std::string_view text; ///< UTF-8, as it stands in the sheet; the source's
    double number;
    std::uint32_t index;
};

class ICellSource {
public:
    virtual ~ICellSource() = default;
    /// The next cell; false behind the last. Its text stays valid until the next call. Throws CSourceError.
    virtual bool Next(SCell& cell) = 0;
};

/// Where the values of a sheet lie.
struct SUsedRange {
    bool isEmpty = true;
    bool isOrdered = true; ///< no cell stands behind one of a later row
    SCellRange range;
};

/// Goes through all cells. Nothing else tells the used range: what a sheet itself claims is often wrong.
SUsedRange MeasureSheet(ICellSource& cells);

} // namespace NSTQ::Providers
