// Decodes EUC-JP: ASCII, half-width kana after 8E, the characters of JIS X 0208 in two bytes, with those that page
// 932 adds, and of JIS X 0212 in three bytes after 8F.
//
// The characters of two bytes are those that page 932 has for them, so that text is the same whichever of the two it
// was in.
#pragma once

#include "ITextDecoder.h"

#include <vector>

namespace NSTQ::Tool {

class CEucJpDecoder final : public ITextDecoder {
public:
    CEucJpDecoder();

private:
    std::size_t Decode(std::string_view block, bool isLast, char*& to) override;
    static std::size_t LengthAt(std::string_view text);
    void AppendCharacter(std::string_view bytes, char*& to);
    void LoadThreeBytes();

    std::vector<char16_t> m_twoBytes;
    std::vector<char16_t> m_threeBytes; ///< all of them, after the first one was met
};

} // namespace NSTQ::Tool
