// What may be shown to a person at a terminal and to nobody else.
#pragma once

#include <string>

namespace NSTQ::Tool {

class SCTerminal {
public:
    /// Whether the descriptor is a terminal that lines can be written over on.
    static bool IsLively(int descriptor);
    /// Whether colours are welcome there as well: not when NO_COLOR is set and not empty.
    static bool IsColoured(int descriptor);
    /// The columns of the terminal; 80 when it does not tell.
    static int CountColumns(int descriptor);
    /// As many characters of UTF-8 as `iColumns` have room for.
    static std::string CutToColumns(const std::string& text, int iColumns);
    /// The text with '?' for its control bytes, which would break the line or play with the terminal.
    static std::string OnOneLine(std::string text);
};

} // namespace NSTQ::Tool
