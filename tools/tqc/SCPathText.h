// Converts paths between the command line and the library.
#pragma once

#include "tqcAccess/CodePage.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tool {

class SCPathText {
public:
    /// Text of one code page in another one, with what they make of invalid bytes and of characters they lack.
    static std::vector<WCHAR> ToWide(std::string_view text, unsigned from);
    static std::string FromWide(std::span<const WCHAR> units, unsigned to);
    static std::string Convert(std::string_view text, unsigned from, unsigned to);

    /// The path of the command line, which is UTF-8, as the library wants it: in the ANSI code page. Throws CFailure
    /// if the page cannot represent it, if it is too long, or if the library would read it as another path.
    static std::string ToLibrary(const std::string& path);

    /// Text of the command line in the ANSI code page. Throws CFailure about `subject` if the page cannot represent
    /// all characters of `what`.
    static std::string ToAnsi(const std::string& text, const std::string& subject, const std::string& what);

    /// The path of the system for a path of the library. Throws CFailure when there is none.
    static std::string ToSystem(const char* path);
};

} // namespace NSTQ::Tool
