// The only supported statement: SELECT * FROM [name].
#pragma once

#include "platform/ado/Ado.h"

#include <string_view>

namespace NSTQ::Platform {

/// The name of the sheet or table that a statement selects: the exact text between its first '[' and its last ']',
/// as a part of `statement`. Keywords may be in any case with any number of spaces between them. Throws
/// DB_E_ERRORSINCOMMAND for everything else.
std::u16string_view ParseStatement(std::u16string_view statement);

} // namespace NSTQ::Platform
