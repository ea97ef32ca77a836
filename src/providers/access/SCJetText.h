// Texts in pages. Each is converted to a BSTR whose memory is reused.
#pragma once

#include "platform/automation/Bstr.h"

#include <span>

namespace NSTQ::Providers {

class SCJetText {
public:
    /// A text of Jet 4 or ACE: UTF-16, or, after the marker FF FE, compressed text: one byte for each character below
    /// U+0100, where a byte 00 switches to byte pairs and back. An odd byte at the end is ignored.
    static void DecodeWide(std::span<const unsigned char> bytes, Platform::CBstr& text);

    /// A text of Jet 4 or ACE in the ANSI code page, without UTF-16 on the way. Returns its end; null when it has
    /// half of a character or a control character, but for CR and LF if it `keepsLineEnds`. `to` has room for
    /// maxBytesPerByte times the bytes of the text, and textSlack more.
    static char* PutPlain(std::span<const unsigned char> bytes, char* to, bool keepsLineEnds);
    static constexpr std::size_t maxBytesPerByte = 2;
    static constexpr std::size_t textSlack = 8;

    /// A text of Jet 3, in `codePage`, as DecodePageText reads it.
    static void DecodeNarrow(std::span<const unsigned char> bytes, unsigned codePage, Platform::CBstr& text);
};

} // namespace NSTQ::Providers
