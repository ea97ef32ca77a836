#include "common/SCEntryNames.h"

#include "platform/codepage/AsciiCase.h"
#include "platform/codepage/LetterCase.h"
#include "platform/codepage/Utf8.h"

#include <algorithm>

namespace NSTQ::NSTQCore {

namespace {

/// Writes a character of two or three bytes over one that has as many.
void Overwrite(char* at, unsigned char length, char32_t character) {
    for (unsigned char i = length; --i > 0; character >>= 6)
        at[i] = static_cast<char>(0x80 | (character & 0x3F));
    at[0] = static_cast<char>((length == 2 ? 0xC0 : 0xE0) | character);
}

/// Of three letters and a number.
bool IsNumberedDevice(std::string_view name) {
    constexpr std::string_view numbers[] = {"1", "2", "3", "4",      "5",      "6",
                                            "7", "8", "9", "\u00B9", "\u00B2", "\u00B3"};
    const std::string_view letters = name.substr(0, 3);
    return (letters == "com" || letters == "lpt") && std::ranges::find(numbers, name.substr(3)) != std::end(numbers);
}

bool IsDevice(std::string_view name) {
    constexpr std::string_view devices[] = {"con", "prn", "aux", "nul", "conin$", "conout$", "clock$"};
    const std::size_t end = name.substr(0, name.find('.')).find_last_not_of(' ');
    const std::string base = Platform::ToAsciiLowerText(std::string(name.substr(0, end + 1)));
    return std::ranges::find(devices, base) != std::end(devices) || (base.size() > 3 && IsNumberedDevice(base));
}

} // namespace

bool SCEntryNames::IsAllowed(std::string_view name) {
    return !name.empty() && name.back() != '.' && name.back() != ' ' && name.find(':') == std::string_view::npos &&
           !IsDevice(name);
}

std::string SCEntryNames::Fold(std::string path) {
    for (std::size_t at = 0; at < path.size();) {
        const auto* const bytes = reinterpret_cast<const unsigned char*>(path.data()) + at;
        const Platform::CUtf8Character character = Platform::DecodeUtf8(bytes, path.size() - at);
        const char32_t small = character.m_isValid ? Platform::ToSmallLetter(character.m_value) : character.m_value;
        if (small != character.m_value && character.m_length == 1)
            path[at] = static_cast<char>(small);
        else if (small != character.m_value)
            Overwrite(&path[at], character.m_length, small);
        at += character.m_length;
    }
    return path;
}

} // namespace NSTQ::NSTQCore
