// The text of a value or column name as a reader returns it: in the ANSI code page, truncated and cleaned.
#pragma once

#include <cstddef>
#include <string_view>

namespace NSTQ::NSTQCore {

struct SFieldText {
    std::size_t length; ///< bytes in the buffer; no NUL is added
    bool isCut;         ///< whether more is missing at the end than cleaning removes
};

/// Converts the text of a value to `buffer`, at most `size` bytes, never a part of a character. Leading spaces and
/// control bytes are removed, a TAB becomes a space, other control bytes are removed, and so are trailing spaces,
/// except one that was a TAB or precedes one. With `bKeepLineEnds` CR and LF are content, and removed bytes take no
/// room; otherwise the text is truncated before it is cleaned.
SFieldText MakeFieldText(std::u16string_view value, char* buffer, std::size_t size, bool bKeepLineEnds);

/// Cleans a name in place, in the same way, but keeps leading spaces. Returns its new length.
std::size_t CleanName(char* name, std::size_t length);

} // namespace NSTQ::NSTQCore
