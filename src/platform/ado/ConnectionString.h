// The content of a connection string.
//
// Ordinary strings follow the rules of OLE DB: "key=value;..." with spaces around keys and values removed, values in
// single or double quotes if they contain ';' or begin with a quote or space (the quote itself doubled inside), "=="
// for a '=' in a key, keys ignoring the case of ASCII letters; the last of two equal keys counts. Unknown keys are
// ignored.
//
// The strings that CSourceDataInfo builds contain path and password unchanged, whatever bytes these have:
//
//     Provider=<name>;Data Source=<path>;Extended Properties="<text>";Jet OLEDB:Database Password=<password>;
//
// Such a string is recognised by its beginning (one of the two exact provider texts), by its last byte, and by a
// seam: one of the exact properties texts for the provider, followed by the key of the password. If it has more than
// one seam, the last one counts whose path ends in an extension that the library opens with those properties; if no
// path does, the last of all, unless the path begins with a quote: then the ordinary rules apply.
//
// Therefore a path opens its own file and no other, even if it contains a whole seam, as long as the password
// contains none: the right seam is then the last one, and its path has a matching extension because the library
// determines the type of a source by it. A password may also contain a seam, unless the text before it ends in a
// matching extension: two different pairs of path and password then result in the same string, and the longer path is
// used. Passwords are typed by users; file names may come from anybody.
#pragma once

#include "platform/ado/Ado.h"

#include <optional>
#include <string>
#include <string_view>

namespace NSTQ::Platform {

/// The key before the password in built strings, with its delimiters.
inline constexpr std::string_view databasePassWordClause = ";Jet OLEDB:Database Password=";

/// The values; empty if the string does not have the key.
struct SConnectionString {
    std::string provider;
    std::string dataSource;
    std::string properties; ///< without its quotes
    std::string passWord;
    bool readsAhead = false; ///< never of a built string, which has no such key
};

/// Reads a string in the ANSI code page. Raises DB_E_BADINITSTRING for a malformed one.
SConnectionString ParseConnectionString(std::string_view text);

/// Only a string that CSourceDataInfo has built; nothing for any other.
std::optional<SConnectionString> ParseBuiltConnectionString(std::string_view text);

} // namespace NSTQ::Platform
