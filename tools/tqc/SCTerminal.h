// What may be shown to a person at a terminal and to nobody else.
#pragma once

namespace NSTQ::Tool {

class SCTerminal {
public:
    /// Whether the descriptor is a terminal that lines can be written over on.
    static bool IsLively(int descriptor);
    /// Whether colours are welcome there as well: not when NO_COLOR is set and not empty.
    static bool IsColoured(int descriptor);
};

} // namespace NSTQ::Tool
