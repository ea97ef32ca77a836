#include "SCTerminal.h"

#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace NSTQ::Tool {

bool SCTerminal::IsLively(int descriptor) {
    const char* const terminal = std::getenv("TERM");
    return ::isatty(descriptor) != 0 && (terminal == nullptr || std::string_view(terminal) != "dumb");
}

bool SCTerminal::IsColoured(int descriptor) {
    const char* const refusal = std::getenv("NO_COLOR");
    return (refusal == nullptr || *refusal == '\0') && IsLively(descriptor);
}

} // namespace NSTQ::Tool
