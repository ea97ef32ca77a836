// The rows of a table that the database keeps about itself: its columns are found by their names.
#pragma once

#include "providers/access/CTableRows.h"

namespace NSTQ::Providers {

class CSystemRows : public CTableRows {
public:
    using CTableRows::CTableRows;

    /// The number of a column. Throws CSourceError when there is none of the name.
    std::size_t Find(std::u16string_view name) const;
    /// 0 for what is no whole number of at most 32 bits.
    std::uint32_t GetNumber(std::size_t column);
    /// Empty for what is no text; valid until another value is asked for.
    std::u16string_view GetText(std::size_t column);
};

} // namespace NSTQ::Providers
