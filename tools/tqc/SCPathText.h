// Paths between the command line and the library.
#pragma once

#include <string>

namespace NSTQ::Tool {

class SCPathText {
public:
    /// The path of the command line, which is UTF-8, as the library wants it: in the ANSI code page. Throws CFailure
    /// when the page cannot carry it, when it is too long, or when the library would take it for another path.
    static std::string ToLibrary(const std::string& path);
};

} // namespace NSTQ::Tool
