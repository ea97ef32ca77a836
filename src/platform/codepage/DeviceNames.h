// The names that Windows takes for devices in every folder.
#pragma once

#include "platform/codepage/AsciiCase.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace NSTQ::Platform {

/// Whether the part of a name before its first dot, without blanks at its end, is that of a device, in any case: CON,
/// PRN, AUX, NUL, COM and LPT with a digit from 1 to 9 (also superscript), CONIN$, CONOUT$, CLOCK$; so "nul .csv" is.
/// `name` is one name, without separators, in UTF-8.
inline bool IsDeviceName(std::string_view name) {
    constexpr std::string_view devices[] = {"con", "prn", "aux", "nul", "conin$", "conout$", "clock$"};
    constexpr std::string_view digits[] = {"1", "2", "3", "4", "5", "6", "7", "8", "9", "\u00B9", "\u00B2", "\u00B3"};
    const std::string_view stem = name.substr(0, name.find('.'));
    const std::string_view base = stem.substr(0, stem.find_last_not_of(' ') + 1);
    const std::string_view letters = base.substr(0, 3);
    const bool isNumbered = IsEqualIgnoringCase(letters, "com") || IsEqualIgnoringCase(letters, "lpt");
    return std::ranges::any_of(devices, [&](std::string_view device) { return IsEqualIgnoringCase(base, device); }) ||
           (isNumbered && std::ranges::find(digits, base.substr(3)) != std::end(digits));
}

} // namespace NSTQ::Platform
