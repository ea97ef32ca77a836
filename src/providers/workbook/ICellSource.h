// The cells of a sheet that hold a value, one after another.
#pragma once

#include "providers/workbook/SCCellReference.h"

namespace NSTQ::Providers {

/// The kind of value of a cell, and the member of SCell that has it: each file format passes its values on as stored,
/// and they are converted only when they are requested.
enum class ECellKind : unsigned char {
    Number,       ///< `number`
    NumberDigits, ///< a number, as text
    Shared,       ///< `index` is that of a shared string
    SharedDigits, ///< the same, as text
    Text,         ///< with escapes for units that XML cannot contain
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
    /// The next cell; false after the last. Its text stays valid until the next call. Throws CSourceError.
    virtual bool Next(SCell& cell) = 0;
};

} // namespace NSTQ::Providers
