#include "SCTerminal.h"

#include "SCCodePageNames.h"
#include "SCPathText.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace NSTQ::Tool {

namespace Port = Platform::Port;

namespace {

std::mutex g_mutex;

} // namespace

std::unique_lock<std::mutex> SCTerminal::Lock() {
    return std::unique_lock(g_mutex);
}

std::unique_lock<std::mutex> SCTerminal::TryToLock() {
    return {g_mutex, std::try_to_lock};
}

bool SCTerminal::IsLively(Port::EStream stream) {
    const char* const terminal = std::getenv("TERM");
    return Port::IsTerminal(stream) && (terminal == nullptr || std::string_view(terminal) != "dumb");
}

bool SCTerminal::IsColoured(Port::EStream stream) {
    const char* const refusal = std::getenv("NO_COLOR");
    return (refusal == nullptr || *refusal == '\0') && IsLively(stream);
}

int SCTerminal::CountColumns(Port::EStream stream) {
    constexpr int usual = 80;
    const int columns = Port::CountTerminalColumns(stream);
    return columns > 0 ? columns : usual;
}

/// Characters that take two columns have three bytes or more, though not all of these take two.
std::string SCTerminal::CutToColumns(const std::string& text, int columns) {
    std::size_t end = 0;
    for (std::size_t i = 0; i < text.size(); end = i) {
        const auto lead = static_cast<unsigned char>(text[i]);
        columns -= lead < 0xE0 ? 1 : 2;
        if (columns < 0)
            break;
        do
            ++i;
        while (i < text.size() && (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80);
    }
    return text.substr(0, end);
}

int SCTerminal::WidthOf(WCHAR unit) {
    const bool isWide = (unit >= 0x1100 && unit < 0x1160) || (unit >= 0x2E80 && unit < 0xA4D0) ||
                        (unit >= 0xAC00 && unit < 0xE000) || (unit >= 0xF900 && unit < 0xFB00) ||
                        (unit >= 0xFF01 && unit < 0xFF61) || (unit >= 0xFFE0 && unit < 0xFFE7);
    return isWide ? 2 : 1;
}

int SCTerminal::WidthOf(std::string_view text) {
    int width = 0;
    for (const WCHAR unit : SCPathText::ToWide(text, Platform::CP_UTF8))
        width += WidthOf(unit);
    return width;
}

std::string SCTerminal::PadToWidth(const std::string& text, int width) {
    return text + std::string(static_cast<std::size_t>(std::max(width - WidthOf(text), 0)), ' ');
}

bool SCTerminal::IsDisturbing(WCHAR unit) {
    const bool isControl = unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
    const bool isLineEnd = unit == 0x2028 || unit == 0x2029;
    const bool isDirection = (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
    return isControl || isLineEnd || isDirection;
}

/// Names of files may be in the locale's encoding, those of sheets are in UTF-8.
std::string SCTerminal::OnOneLine(std::string_view text) {
    const bool isUtf8 = SCPathText::Convert(text, Platform::CP_UTF8, Platform::CP_UTF8) == text;
    const unsigned page = isUtf8 ? Platform::CP_UTF8 : SCCodePageNames::OfLocale();
    std::vector<WCHAR> units = SCPathText::ToWide(text, page);
    std::ranges::replace_if(units, IsDisturbing, WCHAR{'?'});
    return SCPathText::FromWide(units, page);
}

} // namespace NSTQ::Tool
