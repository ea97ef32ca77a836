#include "platform/codepage/DeviceNames.h"
#include "platform/windows/System.h"

#include <algorithm>

namespace NSTQ::Platform::Port {

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
