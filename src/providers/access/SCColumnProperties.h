// The properties that the program keeps of a table's columns. Of interest is only what type a calculated column's
// results have: the descriptor of the column need not tell.
#pragma once

#include "providers/access/STableDefinition.h"

#include <span>

namespace NSTQ::Providers {

class SCColumnProperties {
public:
    /// Gives the calculated ones among `columns` their types out of a table's block of properties. What cannot be
    /// made sense of is passed over: the block is not needed to read a table.
    static void TakeResultTypes(std::span<const unsigned char> block, std::vector<SColumn>& columns);
};

} // namespace NSTQ::Providers
