// What the two targets of delimited text share.
#pragma once

#include "FuzzSupport.h"

namespace NSTQ::Fuzz {

/// Reads the input with the library and with the plain reader, which must agree on every record, whatever the limits,
/// the short reads and a failing one. `utf8` chooses the grammar, unless the input leaves the choice to the reader.
void RunDelimited(CFuzzInput input, bool utf8);

} // namespace NSTQ::Fuzz
