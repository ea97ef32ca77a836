// Conversion between paths in the ANSI code page and paths of the system (UTF-8 with '/').
//
// Bytes that the code page or the two separators cannot represent are escaped: 0x01 and two hexadecimal digits of the
// byte in the name of the system. Only bytes from 0x80, '\' and 0x01 are escaped, and only these are decoded: an
// escape must not introduce a separator, a NUL or a "..", which callers check for in the text they see.
#pragma once

#include "tqcAccess/SystemPath.h"

#include <string>
#include <string_view>

namespace NSTQ::Platform {

/// As ConvertToSystemPath; the code becomes the last error and the result false.
bool MakeSystemPath(const char* path, std::string& systemPath);

/// One name of a folder in the ANSI code page, in a form that ConvertToSystemPath converts back to the same name.
std::string ConvertToAnsiName(std::string_view systemName);

} // namespace NSTQ::Platform
