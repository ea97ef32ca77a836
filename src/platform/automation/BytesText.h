// Bytes as a text of hexadecimal digits.
#pragma once

#include "platform/automation/Bstr.h"

#include <cstddef>
#include <span>

namespace NSTQ::Platform {

/// More bytes than this are not shown: no field of a reader has room for their digits.
inline constexpr std::size_t maxShownBytes = 65535;

/// Writes two capital digits and advances `to`.
inline void PutHex(WCHAR*& to, unsigned char byte) {
    static constexpr char16_t digits[] = u"0123456789ABCDEF";
    *to++ = digits[byte >> 4];
    *to++ = digits[byte & 15];
}

/// 0x and two digits for each byte. Throws _com_error with E_OUTOFMEMORY.
inline void AssignBytesText(CBstr& text, std::span<const unsigned char> bytes) {
    bytes = bytes.first(bytes.size() < maxShownBytes ? bytes.size() : maxShownBytes);
    WCHAR* to = text.Resize(2 + 2 * bytes.size());
    *to++ = u'0';
    *to++ = u'x';
    for (const unsigned char byte : bytes)
        PutHex(to, byte);
}

} // namespace NSTQ::Platform
