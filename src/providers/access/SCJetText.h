// Texts as the pages hold them. Each is put into a BSTR whose memory is used again.
#pragma once

#include "platform/automation/Bstr.h"

#include <span>

namespace NSTQ::Providers {

class SCJetText {
public:
    /// A text of Jet 4 or ACE: UTF-16, or, behind the mark FF FE, bytes that each stand for a character below U+0100,
    /// where a byte 00 turns to pairs of bytes and back. A byte too many at the end is dropped.
    static void DecodeWide(std::span<const unsigned char> bytes, Platform::CBstr& text);

    /// A text of Jet 3, in `codePage`, as DecodePageText reads it.
    static void DecodeNarrow(std::span<const unsigned char> bytes, unsigned codePage, Platform::CBstr& text);
};

} // namespace NSTQ::Providers
