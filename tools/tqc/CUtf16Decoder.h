// Decodes UTF-16 in either order of bytes; a BOM at the beginning is dropped. An unpaired surrogate and a single byte
// at the end are invalid.
#pragma once

#include "ITextDecoder.h"

namespace NSTQ::Tool {

class CUtf16Decoder final : public ITextDecoder {
public:
    explicit CUtf16Decoder(bool isBigEndian) : m_isBigEndian(isBigEndian) {}

private:
    std::size_t Decode(std::string_view block, bool isLast, char*& to) override;
    char32_t UnitAt(std::string_view block, std::size_t at) const;

    bool m_isBigEndian;
    bool m_isAtStart = true;
};

} // namespace NSTQ::Tool
