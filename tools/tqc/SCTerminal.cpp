#include "SCTerminal.h"

#include <unistd.h>

#include <algorithm>
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

std::string SCTerminal::OnOneLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
    return text;
}

} // namespace NSTQ::Tool
