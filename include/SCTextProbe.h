// SCTextProbe: detects properties of a text file by the bytes at its beginning, the head.
//
// A head is as long as SCDataAccessDefine::READ_BUFF_SIZE, or the whole file. The functions own nothing, keep nothing
// and may be called from every thread.
#pragma once

#include "SCDataAccessDefine.h"

#include <string>
#include <string_view>

namespace NSTQ::NSTQCore {

/// The two bytes of a line end; the second one is 0 when there is only one.
struct SLineEnd {
    char first = SCDataAccessDefine::CR_CODE;  ///< also the only one
    char second = SCDataAccessDefine::LF_CODE; ///< 0 when there is none

    /// Both, or the only one.
    std::string Bytes() const { return second == 0 ? std::string{first} : std::string{first, second}; }
};

class TQCACCESS_API SCTextProbe {
public:
    /// The line end: the first LF outside quotes, with or without a CR before it; without any LF the first CR. Line
    /// ends in quotes count only if there are no others. LF if there is none.
    static SLineEnd FindLineEnd(std::string_view head, char separator);

    /// Whether the head has that line end.
    static bool HasLineEnd(std::string_view head, const SLineEnd& lineEnd);

    /// SFT_TXT when the first line has a TAB, SFT_CSV when it has a comma, else SFT_UNKNOWN.
    static SCDeclareConstant::ESourceFileType FindType(std::string_view head, const SLineEnd& lineEnd);

    /// Whether the head begins with the BOM of UTF-8.
    static bool HasUtf8Bom(std::string_view head);
    /// Whether it begins with one of UTF-16.
    static bool HasUtf16Bom(std::string_view head);
    /// The bytes up to the last line end, because the head, unlike a line, may end inside a character; if the head
    /// ends within its first line, up to the last whole character.
    static std::string_view WholeLines(std::string_view head);
    /// Whether those are UTF-8.
    static bool IsUtf8(std::string_view head);
};

} // namespace NSTQ::NSTQCore
