// Bytes as text, in the form of the user locale.
#pragma once

#include "platform/automation/Bstr.h"
#include "tqcAccess/UserLocale.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

namespace NSTQ::Platform {

/// More bytes than this are not shown: no field of a reader has room for their text.
inline constexpr std::size_t maxShownBytes = 65535;

/// Writes two capital digits and advances `to`.
template <class TChar>
void PutHex(TChar*& to, unsigned char byte) {
    static constexpr std::string_view digits = "0123456789ABCDEF";
    *to++ = static_cast<TChar>(digits[byte >> 4]);
    *to++ = static_cast<TChar>(digits[byte & 15]);
}

/// How long the text of so many bytes is.
inline std::size_t GetBytesTextSize(std::size_t count, EBytesForm form) {
    switch (form) {
    case EBytesForm::Hex:
        return 2 + 2 * count;
    case EBytesForm::Base64:
        return (count + 2) / 3 * 4;
    default:
        return 0;
    }
}

/// Writes the text of bytes to `to`, which has room for it. Base64 takes three bytes at a time.
template <class TChar>
void PutBytesText(TChar* to, std::span<const unsigned char> bytes, EBytesForm form) {
    static constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    if (form == EBytesForm::Hex) {
        *to++ = '0';
        *to++ = 'x';
        for (const unsigned char byte : bytes)
            PutHex(to, byte);
    }
    while (form == EBytesForm::Base64 && !bytes.empty()) {
        const std::size_t size = std::min<std::size_t>(bytes.size(), 3);
        unsigned bits = 0;
        for (std::size_t i = 0; i < 3; ++i)
            bits = bits << 8 | (i < size ? bytes[i] : 0U);
        for (std::size_t i = 0; i <= 3; ++i)
            *to++ = static_cast<TChar>(i <= size ? digits[bits >> (18 - 6 * i) & 63] : '=');
        bytes = bytes.subspan(size);
    }
}

/// Throws _com_error with E_OUTOFMEMORY.
inline void AssignBytesText(CBstr& text, std::span<const unsigned char> bytes) {
    bytes = bytes.first(std::min(bytes.size(), maxShownBytes));
    const EBytesForm form = GetUserLocale().bytesForm;
    PutBytesText(text.Resize(GetBytesTextSize(bytes.size(), form)), bytes, form);
}

} // namespace NSTQ::Platform
