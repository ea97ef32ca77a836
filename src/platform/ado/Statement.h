// The one statement that there is: SELECT * FROM [name].
#pragma once

#include "platform/ado/Ado.h"

#include <string_view>

namespace NSTQ::Platform {

/// The name of the sheet or table that a statement selects: the exact text between its first '[' and its last ']',
/// which lies in `statement`. Words may be in any case and have any blanks between them. Raises
/// DB_E_ERRORSINCOMMAND for everything else.
std::u16string_view ParseStatement(std::u16string_view statement);

} // namespace NSTQ::Platform
