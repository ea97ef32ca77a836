// The text of a value or column name as a reader hands it out: in the ANSI code page, cut and cleaned.
#pragma once

#include <cstddef>
#include <string_view>

namespace NSTQ::NSTQCore {

struct SFieldText {
    std::size_t length; ///< bytes in the buffer; no NUL is added
    bool isCut;         ///< whether the end is missing, and is more than what cleaning drops
};

/// Converts a value's text into `buffer`, whose `size` bytes are the most that are kept, never a part of a character.
/// Leading blanks and control bytes go, a TAB becomes a space, other control bytes vanish, and trailing spaces go,
/// except those that a TAB became or that stand before one. With `bKeepLineEnds` CR and LF are content and what is
/// cleaned away takes no room; otherwise the text is cut before it is cleaned.
SFieldText MakeFieldText(std::u16string_view value, char* buffer, std::size_t size, bool bKeepLineEnds);

/// Cleans a name where it stands, in the same way but for leading blanks, which stay. Returns its new length.
std::size_t CleanName(char* name, std::size_t length);

} // namespace NSTQ::NSTQCore
