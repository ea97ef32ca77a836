// From the system's error numbers to the Windows codes that callers look for: the one place where they meet.
#pragma once

#include "tqcAccess/Types.h"

#include <string>

namespace NSTQ::Platform {

/// The Windows code for an `errno` value. Numbers outside the table give 1117 (I/O device): whatever went wrong, it
/// was neither the caller's arguments nor something that the caller can put right.
DWORD ErrorCodeFromSystem(int error);

/// As above for a call on the path `path` (a system path). What is missing counts as on Windows: 2 when only the last
/// component is, 3 when the folder that it should be in is missing or no folder.
DWORD PathErrorCodeFromSystem(int error, const std::string& path);

/// Stores the code of `errno` as the last error and returns false, so that a failing operation ends with it.
bool FailFromSystem();
bool FailFromSystem(const std::string& path);

/// Stores `code` as the last error and returns false.
bool FailWith(DWORD code);

} // namespace NSTQ::Platform
