// Converts the paths that this library returns to those of the system's own functions, such as std::fopen.
//
// All paths of the interface are text in the ANSI code page; those that it returns may have '\' between names, and
// escapes for bytes of a name that the code page cannot represent. The path of the system is UTF-8 with '/'.
#pragma once

#include "Export.h"
#include "Types.h"

#include <string>

namespace NSTQ::Platform {

/// Converts the NUL-terminated `path`, such as that of CSourceDataInfo::GetFilePath, to a path of the system. The
/// file need not exist. Returns 0, or a Windows error code with `systemPath` unspecified: 3 for a null or empty path,
/// 123 for one with bytes that are invalid in the code page or with an invalid escape, 206 for one that is longer
/// than any path of the system. Throws std::bad_alloc.
TQCACCESS_API DWORD ConvertToSystemPath(const char* path, std::string& systemPath);

} // namespace NSTQ::Platform
