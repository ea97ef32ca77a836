// What may be shown to a person at a terminal and to nobody else.
#pragma once

#include "tqcAccess/Types.h"

#include <string>
#include <string_view>

namespace NSTQ::Tool {

class SCTerminal {
public:
    /// Whether the descriptor is a terminal that lines can be written over on.
    static bool IsLively(int descriptor);
    /// Whether colours are welcome there as well: not when NO_COLOR is set and not empty.
    static bool IsColoured(int descriptor);
    /// The columns of the terminal; 80 when it does not tell.
    static int CountColumns(int descriptor);
    /// As many characters of UTF-8 as `columns` have room for.
    static std::string CutToColumns(const std::string& text, int columns);
    /// A character that would move the cursor, play with the terminal, or turn the order of what stands beside it:
    /// a control character of either range, a line separator, a bidirectional embedding, override or isolate.
    static bool IsDisturbing(WCHAR unit);
    /// The text with '?' for such characters. What is no character at all becomes U+FFFD.
    static std::string OnOneLine(std::string_view text);
};

} // namespace NSTQ::Tool
