// Between paths in the ANSI code page and the system's own paths (UTF-8 with '/').
//
// What the code page or the two separators cannot carry travels as an escape: 0x01 and the two hexadecimal digits of
// one byte of the system's name. Only bytes from 0x80 on, '\' and 0x01 are ever escaped, and only those are taken
// back: an escape must not smuggle in a separator, a NUL or a "..", which callers check for in the text they see.
#pragma once

#include "tqcAccess/SystemPath.h"

#include <string>
#include <string_view>

namespace NSTQ::Platform {

/// As ConvertToSystemPath; the code becomes the last error and the result false.
bool MakeSystemPath(const char* path, std::string& systemPath);

/// The form of one name of a folder in the ANSI code page that ConvertToSystemPath leads back to the same name.
std::string ConvertToAnsiName(std::string_view systemName);

} // namespace NSTQ::Platform
