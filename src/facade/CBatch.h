// Batches of rows and their schema in the Arrow C data interface.
#pragma once

#include "IRows.h"

#include <cstddef>

namespace NSTQ::NSTQCore {

/// Builds the batches of one table, one after the other.
class CBatch {
public:
    /// The rows must outlive it.
    explicit CBatch(IRows& rows);

    /// Reads at most `maxRows` rows (0: a default), fewer once their values exceed 16 MiB, into a struct array
    /// that the caller owns. False when there is no further row. Throws what IRows does.
    bool Read(std::size_t maxRows, ArrowArray& array);

    /// A struct type of the columns, which the caller owns. Throws std::bad_alloc.
    static void Describe(const std::vector<SColumn>& columns, ArrowSchema& schema);

private:
    IRows& m_rows;
    std::vector<CColumnBuilder> m_builders;
};

} // namespace NSTQ::NSTQCore
