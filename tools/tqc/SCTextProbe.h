// Detects properties of a text file by the bytes at its beginning.
#pragma once

#include "SOptions.h"

#include <string_view>

namespace NSTQ::Tool {

class SCTextProbe {
public:
    /// The line end: the first LF outside quotes, with or without a CR before it; without any LF the first CR. Line
    /// ends in quotes count only if there are no others. LF if there is none.
    static SLineEnd FindLineEnd(std::string_view head, char separator);

    static bool HasLineEnd(std::string_view head, const SLineEnd& lineEnd);

    /// SFT_TXT when the first line has a TAB, SFT_CSV when it has a comma, else SFT_UNKNOWN.
    static SCDeclareConstant::ESourceFileType FindType(std::string_view head, const SLineEnd& lineEnd);

    static bool HasUtf8Bom(std::string_view head);
    static bool HasUtf16Bom(std::string_view head);
    /// The bytes up to the last line end, because the head, unlike a line, may end inside a character; if the head
    /// ends within its first line, up to the last whole character.
    static std::string_view WholeLines(std::string_view head);
    /// Whether those are UTF-8.
    static bool IsUtf8(std::string_view head);
};

} // namespace NSTQ::Tool
