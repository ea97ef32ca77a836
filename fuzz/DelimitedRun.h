// The common part of the two targets of delimited text.
#pragma once

#include "FuzzSupport.h"

namespace NSTQ::Fuzz {

/// Reads the input with the library and with the plain reader. Both must return the same records whatever the limits,
/// also if reads return few bytes or one of them fails. `utf8` selects the grammar, unless the input leaves that to
/// the detection of the character set.
void RunDelimited(CFuzzInput input, bool utf8);

} // namespace NSTQ::Fuzz
