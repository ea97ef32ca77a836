#include "platform/windows/System.h"

#include <algorithm>

namespace NSTQ::Platform::Port {

namespace {

/// Whether the part of a name before its first dot, without blanks at its end, is that of a device, in any case:
/// "NUL" as well as "nul .csv".
bool IsDeviceName(std::string_view name) {
    using namespace std::string_view_literals;
    constexpr std::string_view devices[] = {"con", "prn", "aux", "nul", "conin$", "conout$"};
    // Of the numbered ones also the raised digits, in UTF-8.
    constexpr std::string_view digits[] = {"0", "1", "2", "3",          "4",          "5",         "6",
                                           "7", "8", "9", "\xC2\xB9"sv, "\xC2\xB2"sv, "\xC2\xB3"sv};
    std::string_view stem = name.substr(0, name.find('.'));
    stem = stem.substr(0, stem.find_last_not_of(' ') + 1);
    const auto begins = [&stem](std::string_view lower) {
        const auto equals = [](char left, char right) {
            return (left >= 'A' && left <= 'Z' ? static_cast<char>(left | 0x20) : left) == right;
        };
        return stem.size() >= lower.size() &&
               std::equal(lower.begin(), lower.end(), stem.begin(), [&](char l, char s) { return equals(s, l); });
    };
    const bool isNumbered = begins("com") || begins("lpt");
    return std::any_of(std::begin(devices), std::end(devices),
                       [&](std::string_view device) { return stem.size() == device.size() && begins(device); }) ||
           (isNumbered && std::find(std::begin(digits), std::end(digits), stem.substr(3)) != std::end(digits));
}

} // namespace

std::size_t GetMaxPathLength() {
    constexpr std::size_t maxUnits = 32767;
    constexpr std::size_t maxBytesPerUnit = 3;
    return maxUnits * maxBytesPerUnit;
}

std::string ToPortPath(std::string path) {
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

bool IsBackslashSeparator() {
    return true;
}

bool BeginsWithDrive(std::string_view path) {
    return path.size() >= 2 && path[1] == ':' && ((path[0] | 0x20) >= 'a' && (path[0] | 0x20) <= 'z');
}

bool IsPlainName(std::string_view name) {
    const auto isReserved = [](char byte) {
        return static_cast<unsigned char>(byte) < 0x20 ||
               std::string_view("<>:\"/\\|?*").find(byte) != std::string_view::npos;
    };
    return !name.empty() && name.back() != '.' && name.back() != ' ' &&
           std::none_of(name.begin(), name.end(), isReserved) && !IsDeviceName(name);
}

std::string ToComparableName(std::string name) {
    std::wstring wide = ToWide(name);
    const int length = static_cast<int>(wide.size());
    // By the table that file systems use: independent of the user's language, and unit by unit.
    if (length > 0)
        ::LCMapStringW(LOCALE_INVARIANT, LCMAP_UPPERCASE, wide.data(), length, wide.data(), length);
    return FromWide(wide);
}

} // namespace NSTQ::Platform::Port
