// Converts the error numbers of the system to the Windows codes that callers expect, in this one table.
#pragma once

#include "tqcAccess/Types.h"

#include <string>

namespace NSTQ::Platform::Port {

/// The Windows code for an `errno` value. Numbers outside the table give 1117 (I/O device): the cause is neither in
/// the arguments nor something that the caller can correct.
DWORD ErrorCodeFromSystem(int error);

/// As above for a call on the path `path` (a system path). A missing path is reported as on Windows: 2 if only the
/// last component is missing, 3 if its folder is missing or not a folder.
DWORD PathErrorCodeFromSystem(int error, const std::string& path);

/// The same for `errno`.
DWORD LastCode();
DWORD LastCode(const std::string& path);

} // namespace NSTQ::Platform::Port
