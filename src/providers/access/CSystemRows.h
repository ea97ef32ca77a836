// The rows of a system table, whose columns are found by their names.
#pragma once

#include "providers/access/CTableRows.h"

namespace NSTQ::Providers {

class CSystemRows : public CTableRows {
public:
    using CTableRows::CTableRows;

    /// The index of a column. Throws CSourceError when there is none of that name.
    std::size_t Find(std::u16string_view name) const;
    /// 0 for a value that is not an integer of at most 32 bits.
    std::uint32_t GetNumber(std::size_t column);
    /// Empty for a value that is not a text; valid until the next value is requested.
    std::u16string_view GetText(std::size_t column);
};

} // namespace NSTQ::Providers
