// What a connection string says.
//
// Ordinary strings follow the rules of OLE DB: "key=value;..." with blanks around keys and values dropped, values in
// single or double quotes where they hold ';' or begin with a quote or blank (the quote itself doubled inside), "=="
// for a '=' in a key, keys without regard to the case of ASCII letters, the last of two equal keys counting. Keys
// that mean nothing here are passed over.
//
// The strings that CSourceDataInfo builds hold path and password exactly as they are, whatever bytes these have:
//
//     Provider=<name>;Data Source=<path>;Extended Properties="<text>";Jet OLEDB:Database Password=<password>;
//
// Such a string is known by its beginning (one of the two exact provider texts), by its last byte, and by a seam: one
// of the exact properties texts that go with the provider, followed by the password's key. Where it has more than one
// seam, the true one is the last whose path ends in an extension that the library opens with those properties; when
// no path does, the last of all, unless the path begins with a quote, in which case the ordinary rules are used.
//
// Therefore a path opens its own file and no other whatever it holds, a whole seam included, as long as the
// password holds no seam: the true seam is then the last one, and its path has a fitting extension because the
// library takes the type of a source from it. A password may hold a seam, too, unless the text before it ends in a
// fitting extension: two different pairs of path and password then make one and the same string, and the longer path
// is taken. Passwords are typed by users; file names may come from anybody.
#pragma once

#include "platform/ado/Ado.h"

#include <string>
#include <string_view>

namespace NSTQ::Platform {

/// The key before the password in built strings, with what stands around it.
inline constexpr std::string_view databasePassWordClause = ";Jet OLEDB:Database Password=";

/// The values that count; empty when the string does not have the key.
struct SConnectionString {
    std::string strProvider;
    std::string strDataSource;
    std::string strProperties; ///< without its quotes
    std::string strPassWord;
};

/// Reads a string in the ANSI code page. Raises DB_E_BADINITSTRING for a malformed one.
SConnectionString ParseConnectionString(std::string_view text);

} // namespace NSTQ::Platform
