#include "platform/windows/System.h"

namespace NSTQ::Platform::Port {

namespace {

/// Windows gives undefined bytes as control characters or as characters for private use.
bool IsStandIn(unsigned codePage, wchar_t character, unsigned char byte) {
    constexpr unsigned lastOfWindows = 1258;
    const bool isControl = codePage <= lastOfWindows && character == byte && byte >= 0x80 && byte < 0xA0;
    return isControl || (character >= 0xE000 && character < 0xF900);
}

/// Characters of three bytes have two in the page of Windows, the last one without its highest bit.
std::string ToPage(std::string_view text) {
    if (text.size() < 3)
        return std::string(text);
    return {text[1], static_cast<char>(text[2] & 0x7F)};
}

char16_t Decode(unsigned codePage, std::string_view text) {
    const std::string bytes = ToPage(text);
    wchar_t units[4] = {};
    const int count =
        ::MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(bytes.size()), units, 4);
    const bool isOne = count == 1 && !IsStandIn(codePage, units[0], static_cast<unsigned char>(bytes[0]));
    return isOne ? static_cast<char16_t>(units[0]) : noCharacter;
}

} // namespace

DWORD DecodeCharacters(unsigned codePage, std::string_view bytes, std::size_t length,
                       std::vector<char16_t>& characters) {
    if (!::IsValidCodePage(codePage))
        return ERROR_NOT_SUPPORTED;
    characters.clear();
    for (std::size_t at = 0; at < bytes.size(); at += length)
        characters.push_back(Decode(codePage, bytes.substr(at, length)));
    return 0;
}

} // namespace NSTQ::Platform::Port
