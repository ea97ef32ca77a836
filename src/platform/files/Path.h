// Between paths in the ANSI code page and the system's own paths (UTF-8 with '/').
//
// What the code page or the two separators cannot carry travels as an escape: 0x01 and the two hexadecimal digits of
// one byte of the system's name. Only bytes from 0x80 on, '\' and 0x01 are ever escaped, and only those are taken
// back: an escape must not smuggle in a separator, a NUL or a "..", which callers check for in the text they see.
#pragma once

#include "platform/Types.h"

#include <string>
#include <string_view>

namespace NSTQ::Platform {

/// Turns the NUL-terminated `path` into the system's path in `systemPath`. Returns 0, or the Windows code and leaves
/// `systemPath` unspecified: 3 for a null or empty path, 123 for one with characters that the code page does not
/// have or with a false escape, 206 for one that is longer than any path of the system.
DWORD ConvertToSystemPath(const char* path, std::string& systemPath);

/// As above; the code becomes the last error and the result false.
bool MakeSystemPath(const char* path, std::string& systemPath);

/// The form of one name of a folder in the ANSI code page that ConvertToSystemPath leads back to the same name.
std::string ConvertToAnsiName(std::string_view systemName);

} // namespace NSTQ::Platform
