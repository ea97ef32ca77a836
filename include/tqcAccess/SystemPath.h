// From the paths that this library hands out to those that the system's own functions, such as std::fopen, open.
//
// All paths of the interface are text in the ANSI code page; those that come out may have '\' between names, and
// the bytes of a name that the code page lacks as an escape. The path of the system is UTF-8 with '/'.
#pragma once

#include "Export.h"
#include "Types.h"

#include <string>

namespace NSTQ::Platform {

/// Turns the NUL-terminated `path`, such as CSourceDataInfo::GetFilePath gives, into the path of the system. Nothing
/// is looked up: the file need not exist. Returns 0, or a Windows code with `systemPath` unspecified: 3 for a null or
/// empty path, 123 for one with characters that the code page does not have or with a false escape, 206 for one that
/// is longer than any path of the system. Throws std::bad_alloc.
TQCACCESS_API DWORD ConvertToSystemPath(const char* path, std::string& systemPath);

} // namespace NSTQ::Platform
