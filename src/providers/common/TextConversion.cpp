#include "providers/common/TextConversion.h"

#include "platform/codepage/SingleBytePages.h"
#include "platform/codepage/Utf8.h"
#include "providers/common/CSourceError.h"
#include "tqcAccess/CodePage.h"

#include <algorithm>

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

/// Puts the bytes to `to`; false when one of them is not ASCII. Without a branch, so that many are done at a time.
bool PutAscii(char16_t* to, std::span<const unsigned char> bytes) {
    unsigned char all = 0;
    for (const unsigned char byte : bytes) {
        all = static_cast<unsigned char>(all | byte);
        *to++ = byte;
    }
    return all < 0x80;
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

std::string_view CutForField(std::string_view text) {
    constexpr std::size_t longest = 65536;
    if (text.size() <= longest)
        return text;
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < ' '; };
    const auto isContent = [&](char c) { return c != ' ' && (!isControl(c) || c == '\t' || c == '\r' || c == '\n'); };
    // A TAB is content only after other content.
    const auto first = std::find_if(text.begin(), text.end(), [&](char c) { return c != '\t' && isContent(c); });
    const auto blanks = static_cast<std::size_t>(first - text.begin());
    text.remove_prefix(blanks - std::min(blanks, longest));
    std::size_t room = longest;
    auto at = text.begin() + static_cast<std::ptrdiff_t>(std::min(blanks, longest));
    for (; at != text.end() && room > 0; ++at)
        room -= !IsUtf8Trail(static_cast<unsigned char>(*at)) && (isContent(*at) || *at == ' ') ? 1 : 0;
    // Only spaces at the truncation would look like the end of a shorter text.
    at = std::find_if(at, text.end(), isContent);
    while (at != text.end() && IsUtf8Trail(static_cast<unsigned char>(*at)))
        ++at;
    return {text.begin(), at == text.end() ? at : at + 1};
}

std::size_t ConvertToUtf16(std::string_view text, char16_t* target) {
    char16_t* out = target;
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
    return static_cast<std::size_t>(out - target);
}

void AppendUtf16(std::string_view text, std::u16string& target) {
    const std::size_t begin = target.size();
    // A sequence never has more units than bytes.
    target.resize(begin + text.size());
    target.resize(begin + ConvertToUtf16(text, target.data() + begin));
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

void TakeBackEscapes(std::string& text) {
    if (!MayHaveEscapes(text))
        return;
    std::u16string wide = ToUtf16(text);
    TakeBackEscapes(wide, 0);
    text.resize(ToUtf8(wide, text).size());
}

std::string_view ToUtf8(std::u16string_view wide, std::string& target) {
    constexpr std::size_t longestUnit = 3;
    target.resize(longestUnit * wide.size());
    if (wide.empty())
        return {};
    const int size = WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), target.data(),
                                         static_cast<int>(target.size()), nullptr, nullptr);
    return std::string_view(target).substr(0, static_cast<std::size_t>(size));
}

bool HasPageTable(unsigned codePage) {
    return FindUpperHalf(codePage) != nullptr || (codePage != CP_ACP && IsCodePageSupported(codePage));
}

std::size_t DecodePageText(std::span<const unsigned char> bytes, unsigned codePage, char16_t* to) {
    if (PutAscii(to, bytes))
        return bytes.size();
    if (const char16_t* const upperHalf = FindUpperHalf(codePage)) {
        std::ranges::transform(bytes, to,
                               [=](unsigned char byte) { return byte < 0x80 ? byte : upperHalf[byte - 0x80]; });
        return bytes.size();
    }
    if (!HasPageTable(codePage))
        throw CSourceError("its texts are in code page " + std::to_string(codePage) + ", which cannot be read");
    // No page here makes more units of a text than it has bytes.
    const auto length = static_cast<int>(bytes.size());
    return static_cast<std::size_t>(
        MultiByteToWideChar(codePage, 0, reinterpret_cast<const char*>(bytes.data()), length, to, length));
}

} // namespace NSTQ::Providers
