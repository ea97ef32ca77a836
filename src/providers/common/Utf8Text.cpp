#include "providers/common/Utf8Text.h"

#include "platform/codepage/Utf8.h"

namespace NSTQ::Providers {

using namespace Platform;

namespace {

constexpr std::size_t escapeLength = 7;

int HexValue(char16_t unit) {
    if (unit >= u'0' && unit <= u'9')
        return unit - u'0';
    if (unit >= u'a' && unit <= u'f')
        return unit - u'a' + 10;
    return unit >= u'A' && unit <= u'F' ? unit - u'A' + 10 : -1;
}

/// The unit that an escape at the beginning of `text` stands for, or -1.
int ReadEscape(std::u16string_view text) {
    if (text.size() < escapeLength || text[0] != u'_' || text[1] != u'x' || text[6] != u'_')
        return -1;
    int unit = 0;
    for (const char16_t digit : text.substr(2, 4)) {
        const int value = HexValue(digit);
        if (value < 0)
            return -1;
        unit = unit << 4 | value;
    }
    return unit;
}

} // namespace

std::size_t EncodeUtf8(char32_t character, unsigned char* target) {
    const auto trail = [character](unsigned shift) {
        return static_cast<unsigned char>(0x80 | (character >> shift & 0x3F));
    };
    if (character < 0x80) {
        target[0] = static_cast<unsigned char>(character);
        return 1;
    }
    if (character < 0x800) {
        target[0] = static_cast<unsigned char>(0xC0 | character >> 6);
        target[1] = trail(0);
        return 2;
    }
    if (character < 0x10000) {
        target[0] = static_cast<unsigned char>(0xE0 | character >> 12);
        target[1] = trail(6);
        target[2] = trail(0);
        return 3;
    }
    target[0] = static_cast<unsigned char>(0xF0 | character >> 18);
    target[1] = trail(12);
    target[2] = trail(6);
    target[3] = trail(0);
    return longestUtf8Character;
}

void AppendUtf16(std::string_view text, std::u16string& target) {
    const std::size_t begin = target.size();
    // A sequence never has more units than bytes.
    target.resize(begin + text.size());
    char16_t* out = target.data() + begin;
    const auto* at = reinterpret_cast<const unsigned char*>(text.data());
    const unsigned char* end = at + text.size();
    while (at != end) {
        const unsigned char* plainEnd = SkipAscii(at, end);
        while (at != plainEnd)
            *out++ = *at++;
        if (at == end)
            break;
        const CUtf8Character character = DecodeUtf8(at, static_cast<std::size_t>(end - at));
        at += character.m_length;
        if (character.m_value >= 0x10000) {
            *out++ = static_cast<char16_t>(0xD800 + ((character.m_value - 0x10000) >> 10));
            *out++ = static_cast<char16_t>(0xDC00 + (character.m_value & 0x3FF));
        } else {
            *out++ = static_cast<char16_t>(character.m_value);
        }
    }
    target.resize(static_cast<std::size_t>(out - target.data()));
}

std::u16string ToUtf16(std::string_view text) {
    std::u16string wide;
    AppendUtf16(text, wide);
    return wide;
}

void TakeBackEscapes(std::u16string& text, std::size_t begin) {
    std::size_t from = text.find(u"_x", begin);
    if (from == std::u16string::npos)
        return;
    std::size_t to = from;
    while (from < text.size()) {
        const int unit = text[from] == u'_' ? ReadEscape(std::u16string_view(text).substr(from)) : -1;
        text[to++] = unit < 0 ? text[from] : static_cast<char16_t>(unit);
        from += unit < 0 ? 1 : escapeLength;
    }
    text.resize(to);
}

} // namespace NSTQ::Providers
