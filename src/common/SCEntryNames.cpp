#include "common/SCEntryNames.h"

#include "platform/codepage/DeviceNames.h"
#include "platform/codepage/LetterCase.h"
#include "platform/codepage/Utf8.h"

namespace NSTQ::NSTQCore {

namespace {

/// Writes a character of two or three bytes over one that has as many.
void Overwrite(char* at, unsigned char length, char32_t character) {
    for (unsigned char i = length; --i > 0; character >>= 6)
        at[i] = static_cast<char>(0x80 | (character & 0x3F));
    at[0] = static_cast<char>((length == 2 ? 0xC0 : 0xE0) | character);
}

} // namespace

bool SCEntryNames::IsAllowed(std::string_view name) {
    return !name.empty() && name.back() != '.' && name.back() != ' ' && name.find(':') == std::string_view::npos &&
           !Platform::IsDeviceName(name);
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
