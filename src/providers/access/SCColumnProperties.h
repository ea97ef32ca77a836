// The properties of the columns of a table. Only the result type of a calculated column is used: the descriptor of
// the column need not have it.
#pragma once

#include "providers/access/STableDefinition.h"

#include <span>

namespace NSTQ::Providers {

class SCColumnProperties {
public:
    /// Sets the types of the calculated columns by the property block of the table. Invalid content is ignored: the
    /// block is not needed to read a table.
    static void TakeResultTypes(std::span<const unsigned char> block, std::vector<SColumn>& columns);
};

} // namespace NSTQ::Providers
