#include "SCTerminal.h"

#include <sys/ioctl.h>
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

int SCTerminal::CountColumns(int descriptor) {
    constexpr int usual = 80;
    winsize size{};
    return ::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}

/// Characters that take two columns have three bytes or more, though not all of these take two.
std::string SCTerminal::CutToColumns(const std::string& text, int iColumns) {
    std::size_t end = 0;
    for (std::size_t i = 0; i < text.size(); end = i) {
        const auto lead = static_cast<unsigned char>(text[i]);
        iColumns -= lead < 0xE0 ? 1 : 2;
        if (iColumns < 0)
            break;
        do
            ++i;
        while (i < text.size() && (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80);
    }
    return text.substr(0, end);
}

std::string SCTerminal::OnOneLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
    return text;
}

} // namespace NSTQ::Tool
