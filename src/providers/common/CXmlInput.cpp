#include "providers/common/CXmlInput.h"

#include "providers/common/CSourceError.h"
#include "providers/common/TextConversion.h"

#include <algorithm>
#include <cstring>

namespace NSTQ::Providers {

namespace {

/// A surrogate pair: the longest character of UTF-16, in bytes.
constexpr std::size_t longestCharacter = 4;

bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xD800 && unit < 0xDC00;
}

bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xDC00 && unit < 0xE000;
}

} // namespace

std::size_t CXmlInput::Read(std::span<unsigned char> target) {
    if (m_encoding == EEncoding::Unknown)
        Sniff();
    if (m_encoding != EEncoding::Utf8)
        return Convert(target);
    return m_rawBegin < m_raw.size() ? TakeRaw(target) : m_stream->Read(target);
}

void CXmlInput::Sniff() {
    while (m_raw.size() < longestCharacter && FillRaw()) {
    }
    const auto beginsWith = [this](std::string_view mark) {
        return m_raw.size() >= mark.size() && std::memcmp(m_raw.data(), mark.data(), mark.size()) == 0;
    };
    using namespace std::string_view_literals;
    m_encoding = EEncoding::Utf8;
    if (beginsWith("\xEF\xBB\xBF"))
        m_rawBegin = 3;
    else if (beginsWith("\xFF\xFE"))
        m_encoding = EEncoding::Utf16Little, m_rawBegin = 2;
    else if (beginsWith("\xFE\xFF"))
        m_encoding = EEncoding::Utf16Big, m_rawBegin = 2;
    else if (beginsWith("<\0"sv))
        m_encoding = EEncoding::Utf16Little;
    else if (beginsWith("\0<"sv))
        m_encoding = EEncoding::Utf16Big;
}

std::size_t CXmlInput::TakeRaw(std::span<unsigned char> target) {
    const std::size_t count = std::min(target.size(), m_raw.size() - m_rawBegin);
    std::memcpy(target.data(), m_raw.data() + m_rawBegin, count);
    m_rawBegin += count;
    return count;
}

/// Appends bytes to those that remain. False at the end.
bool CXmlInput::FillRaw() {
    m_raw.erase(m_raw.begin(), m_raw.begin() + static_cast<std::ptrdiff_t>(m_rawBegin));
    m_rawBegin = 0;
    const std::size_t kept = m_raw.size();
    m_raw.resize(kept + rawSize);
    const std::size_t count = m_stream->Read(std::span(m_raw).subspan(kept));
    m_raw.resize(kept + count);
    return count > 0;
}

std::size_t CXmlInput::Convert(std::span<unsigned char> target) {
    std::size_t written = 0;
    while (target.size() - written >= longestUtf8Character) {
        const std::size_t left = m_raw.size() - m_rawBegin;
        if (left < longestCharacter && !FillRaw() && left == 0)
            break;
        written += EncodeUtf8(ReadCharacter(), target.data() + written);
    }
    return written;
}

char32_t CXmlInput::ReadCharacter() {
    const std::size_t left = m_raw.size() - m_rawBegin;
    const std::size_t high = m_encoding == EEncoding::Utf16Big ? 0 : 1;
    const auto unit = [&](std::size_t index) {
        const unsigned char* bytes = m_raw.data() + m_rawBegin + 2 * index;
        return static_cast<char32_t>(bytes[high] << 8 | bytes[1 - high]);
    };
    if (left < 2)
        throw CSourceError("UTF-16 text ends within a character");
    const char32_t first = unit(0);
    if (!IsHighSurrogate(first) && !IsLowSurrogate(first)) {
        m_rawBegin += 2;
        return first;
    }
    if (IsLowSurrogate(first) || left < longestCharacter || !IsLowSurrogate(unit(1)))
        throw CSourceError("UTF-16 text has half a surrogate pair");
    const char32_t second = unit(1);
    m_rawBegin += longestCharacter;
    return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

} // namespace NSTQ::Providers
