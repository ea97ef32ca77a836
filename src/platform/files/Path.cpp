#include "platform/files/Path.h"

#include "platform/Port.h"
#include "platform/codepage/CodePageTables.h"
#include "platform/errors/LastError.h"
#include "tqcAccess/CodePage.h"

#include <algorithm>
#include <cstring>

namespace NSTQ::Platform {

namespace {

constexpr char escapeMark = '\x01';
constexpr std::size_t escapeLength = 3;
constexpr std::string_view hexDigits = "0123456789ABCDEF";
/// One character during conversion; an invalid sequence gives as many as it has bytes.
struct SConverted {
    char bytes[16];
    int length;

    std::string_view View() const { return {bytes, static_cast<std::size_t>(length)}; }
};

struct SUnits {
    WCHAR units[8];
    int length;
};

SUnits ToUnits(unsigned codePage, std::string_view character) {
    SUnits result{};
    result.length = MultiByteToWideChar(codePage, 0, character.data(), static_cast<int>(character.size()),
                                        result.units, static_cast<int>(std::size(result.units)));
    return result;
}

SConverted FromUnits(unsigned codePage, const SUnits& units) {
    SConverted result{};
    if (units.length > 0)
        result.length = WideCharToMultiByte(codePage, 0, units.units, units.length, result.bytes,
                                            static_cast<int>(std::size(result.bytes)), nullptr, nullptr);
    return result;
}

bool IsAscii(char byte) {
    return static_cast<unsigned char>(byte) < 0x80;
}

/// The characters that the pages decode undefined bytes to.
bool HasDefaultCharacter(const SUnits& units) {
    constexpr std::u16string_view defaults = u"?\u30FB\uFFFD";
    return std::u16string_view(units.units, static_cast<std::size_t>(units.length)).find_first_of(defaults) !=
           std::u16string_view::npos;
}

/// Several pages have two codes for one character, so a round trip that changes bytes is not an error by itself; it
/// is one if they decode to a default character for undefined bytes.
bool AppendAsUtf8(std::string_view character, std::string& text) {
    const SUnits units = ToUnits(CP_ACP, character);
    if (units.length == 0 || (HasDefaultCharacter(units) && FromUnits(CP_ACP, units).View() != character))
        return false;
    text += FromUnits(CP_UTF8, units).View();
    return true;
}

bool ConvertAnsiToUtf8(std::string_view ansi, std::string& text) {
    if (GetAnsiCodePage() == CP_UTF8) {
        text = ansi;
        return true;
    }
    text.clear();
    while (!ansi.empty()) {
        const bool single = IsAscii(ansi[0]) || KeptTextLength(ansi.data(), ansi.size(), 1) == 1;
        const std::string_view character = ansi.substr(0, single ? 1 : 2);
        if (IsAscii(ansi[0]))
            text += ansi[0];
        else if (!AppendAsUtf8(character, text))
            return false;
        ansi.remove_prefix(character.size());
    }
    return true;
}

bool IsEscapable(unsigned value) {
    return value >= 0x80 || value == '\\' || value == escapeMark;
}

bool DecodeEscapes(std::string& text) {
    std::size_t kept = 0;
    for (std::size_t from = 0; from < text.size(); ++from, ++kept) {
        text[kept] = text[from];
        if (text[from] != escapeMark)
            continue;
        if (text.size() - from < escapeLength)
            return false;
        const std::size_t high = hexDigits.find(text[from + 1]);
        const std::size_t low = hexDigits.find(text[from + 2]);
        if (high == std::string_view::npos || low == std::string_view::npos)
            return false;
        const auto value = static_cast<unsigned>(high * 16 + low);
        if (!IsEscapable(value))
            return false;
        text[kept] = static_cast<char>(value);
        from += escapeLength - 1;
    }
    text.resize(kept);
    return true;
}

void AppendEscaped(std::string_view bytes, std::string& name) {
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        name += {escapeMark, hexDigits[value >> 4], hexDigits[value & 0x0F]};
    }
}

/// The length of the UTF-8 sequence at the start of `text` by its lead byte, at most the length of `text`.
std::size_t SequenceLength(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const std::size_t claimed = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
    return std::min(claimed, text.size());
}

/// Accepts a character only if its bytes convert back to it and none of them is a separator: a best fit such as '\'
/// for the yen sign does not convert back.
bool AppendAsAnsi(std::string_view character, std::string& name) {
    const SUnits units = ToUnits(CP_UTF8, character);
    const SConverted ansi = FromUnits(CP_ACP, units);
    if (ansi.length == 0 || FromUnits(CP_UTF8, ToUnits(CP_ACP, ansi.View())).View() != character)
        return false;
    name += ansi.View();
    return true;
}

} // namespace

DWORD ConvertToSystemPath(const char* path, std::string& systemPath) {
    if (path == nullptr || *path == '\0')
        return ERROR_PATH_NOT_FOUND;
    // In the longest form each byte of the system's path is an escape.
    const std::size_t maxAnsiPathLength = Port::GetMaxPathLength() * escapeLength;
    const std::size_t length = ::strnlen(path, maxAnsiPathLength + 1);
    if (length > maxAnsiPathLength)
        return ERROR_FILENAME_EXCED_RANGE;
    const CPathCodePage pathPage;
    if (!ConvertAnsiToUtf8({path, length}, systemPath))
        return ERROR_INVALID_NAME;
    std::replace(systemPath.begin(), systemPath.end(), '\\', '/');
    return DecodeEscapes(systemPath) ? ERROR_SUCCESS : ERROR_INVALID_NAME;
}

bool MakeSystemPath(const char* path, std::string& systemPath) {
    const DWORD code = ConvertToSystemPath(path, systemPath);
    return code == ERROR_SUCCESS || FailWith(code);
}

std::string ConvertToAnsiName(std::string_view systemName) {
    const CPathCodePage pathPage;
    const bool isUtf8 = GetAnsiCodePage() == CP_UTF8;
    std::string name;
    while (!systemName.empty()) {
        const bool plain = isUtf8 || IsAscii(systemName[0]);
        const std::string_view character = systemName.substr(0, plain ? 1 : SequenceLength(systemName));
        if (plain && systemName[0] != '\\' && systemName[0] != escapeMark) {
            name += systemName[0];
            systemName.remove_prefix(1);
        } else if (!plain && AppendAsAnsi(character, name)) {
            systemName.remove_prefix(character.size());
        } else {
            AppendEscaped(systemName.substr(0, 1), name);
            systemName.remove_prefix(1);
        }
    }
    return name;
}

} // namespace NSTQ::Platform
