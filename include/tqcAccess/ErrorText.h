// Texts of the system error codes that the library returns.
#pragma once

#include "Export.h"
#include "Types.h"

#include <string>

namespace NSTQ::Platform {

/// What the code means, in a few words that end a sentence ("no such file"); for other codes their number. Throws
/// std::bad_alloc.
TQCACCESS_API std::string GetErrorText(DWORD code);

} // namespace NSTQ::Platform
