#include "CUtf16Decoder.h"

namespace NSTQ::Tool {
namespace {

bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

} // namespace

std::size_t CUtf16Decoder::Decode(std::string_view block, bool isLast, char*& to) {
    constexpr char32_t bom = 0xFEFF;
    std::size_t at = 0;
    if (m_isAtStart && block.size() >= 2) {
        at = UnitAt(block, 0) == bom ? 2 : 0;
        m_isAtStart = false;
    }
    for (; at + 2 <= block.size(); at += 2) {
        const char32_t unit = UnitAt(block, at);
        if (!IsHighSurrogate(unit)) {
            if (IsLowSurrogate(unit))
                *to++ = invalid;
            else
                Append(to, unit);
            continue;
        }
        const bool isWhole = at + 4 <= block.size();
        if (!isWhole && !isLast)
            break;
        const char32_t next = isWhole ? UnitAt(block, at + 2) : 0;
        if (IsLowSurrogate(next)) {
            Append(to, 0x10000 + ((unit - 0xD800) << 10 | (next - 0xDC00)));
            at += 2;
        } else {
            *to++ = invalid;
        }
    }
    if (isLast && at < block.size())
        *to++ = invalid;
    return isLast ? block.size() : at;
}

char32_t CUtf16Decoder::UnitAt(std::string_view block, std::size_t at) const {
    const auto first = static_cast<unsigned char>(block[at]);
    const auto second = static_cast<unsigned char>(block[at + 1]);
    return m_isBigEndian ? static_cast<char32_t>(first << 8 | second) : static_cast<char32_t>(second << 8 | first);
}

} // namespace NSTQ::Tool
