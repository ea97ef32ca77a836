// The cells of a sheet that hold a value, one after another.
#pragma once

#include "providers/xlsx/SCCellReference.h"

namespace NSTQ::Providers {

enum class ECellKind : unsigned char {
    Number,
    Shared, ///< the text is the index of a shared one
    Text,
    Error,
    Boolean,
    IsoDate,
};

struct SCell {
    SCellPosition position;
    ECellKind kind;
    std::uint32_t style;
    std::string_view strText; ///< UTF-8, as it stands in the sheet; the source's
};

class ICellSource {
public:
    virtual ~ICellSource() = default;
    /// The next cell; false behind the last. Its text stays valid until the next call. Throws CSourceError.
    virtual bool Next(SCell& cell) = 0;
};

} // namespace NSTQ::Providers
