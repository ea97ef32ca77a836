// Guesses about a text file from the bytes at its beginning.
#pragma once

#include "SOptions.h"

#include <string_view>

namespace NSTQ::Tool {

class SCTextProbe {
public:
    /// The line end: the first LF outside quotes tells, with a CR before it or without; without any LF a CR does.
    /// Line ends in quotes count only when there are no others. LF when there is none at all.
    static SLineEnd FindLineEnd(std::string_view head, char separator);

    static bool HasLineEnd(std::string_view head, const SLineEnd& lineEnd);

    /// SFT_TXT when the first line has a TAB, SFT_CSV when it has a comma, else SFT_UNKNOWN.
    static SCDeclareConstant::ESourceFileType FindType(std::string_view head, const SLineEnd& lineEnd);

    static bool HasUtf8Mark(std::string_view head);
    static bool HasUtf16Mark(std::string_view head);
    /// The bytes up to the last line end, for a head may end inside a character, while a line does not; those up to
    /// the last whole character of a head that is cut off within its first line.
    static std::string_view WholeLines(std::string_view head);
    /// Whether those are UTF-8.
    static bool IsUtf8(std::string_view head);
};

} // namespace NSTQ::Tool
