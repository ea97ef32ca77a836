#include "CRowEncoder.h"

#include "SCCodePageNames.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace NSTQ::Tool {

using namespace NSTQ::Platform;

namespace {

/// The default characters of undefined bytes in the pages.
constexpr std::u16string_view standIns = u"?\u30FB\uFFFD";

} // namespace

CRowEncoder::CRowEncoder(unsigned codePage, std::size_t fieldLengthMax)
    : m_sourcePage(GetAnsiCodePage()), m_codePage(codePage), m_maxFieldLength(fieldLengthMax),
      m_name(SCCodePageNames::Describe(codePage)), m_sourceName(SCCodePageNames::NameOf(m_sourcePage)) {}

bool CRowEncoder::IsAscii(const char* text, std::size_t length) {
    std::uint64_t high = 0;
    for (; length >= sizeof high; text += sizeof high, length -= sizeof high) {
        std::uint64_t word = 0;
        std::memcpy(&word, text, sizeof word);
        high |= word;
    }
    for (; length > 0; ++text, --length)
        high |= static_cast<std::uint64_t>(static_cast<unsigned char>(*text));
    return (high & 0x8080808080808080U) == 0;
}

/// Fields that a reader has stored one after the other, separated by NULs, are examined together.
bool CRowEncoder::AreUtf8(const char* const* fields, const WORD* lengths, DWORD count) {
    for (DWORD i = 0; i < count;) {
        const char* const begin = fields[i];
        const char* end = begin + lengths[i];
        while (++i < count && fields[i] == end + 1)
            end = fields[i] + lengths[i];
        const auto size = static_cast<std::size_t>(end - begin);
        if (CountValidUtf8(begin, size) != size)
            return false;
    }
    return true;
}

bool CRowEncoder::StayAsTheyAre(const char* const* fields, const WORD* lengths, DWORD count) const {
    if (m_codePage == m_sourcePage)
        return m_codePage != CP_UTF8 || AreUtf8(fields, lengths, count);
    bool isAscii = true;
    for (DWORD i = 0; i < count && isAscii; ++i)
        isAscii = IsAscii(fields[i], lengths[i]);
    return isAscii;
}

void CRowEncoder::Encode(const char**& fields, const WORD*& lengths, DWORD count) {
    m_sourceLoss.clear();
    m_loss.clear();
    if (StayAsTheyAre(fields, lengths, count))
        return;
    m_text.clear();
    m_starts.clear();
    m_lengths.clear();
    for (DWORD i = 0; i < count; ++i)
        EncodeField(fields[i], lengths[i]);
    m_fields.clear();
    for (const std::size_t start : m_starts)
        m_fields.push_back(m_text.data() + start);
    fields = m_fields.data();
    lengths = m_lengths.data();
}

std::string CRowEncoder::EncodeText(const std::string& text) {
    const char* field = text.data();
    const char** fields = &field;
    const auto length = static_cast<WORD>(text.size());
    const WORD* lengths = &length;
    Encode(fields, lengths, 1);
    return {fields[0], lengths[0]};
}

void CRowEncoder::EncodeField(const char* text, WORD length) {
    const std::size_t start = m_text.size();
    m_starts.push_back(start);
    m_wide.resize(std::max<std::size_t>(m_wide.size(), length));
    const int units = MultiByteToWideChar(CP_ACP, 0, text, length, m_wide.data(), length);
    // No page needs more than three bytes per unit.
    m_text.resize(start + static_cast<std::size_t>(units) * 3);
    const int size = units == 0 ? 0
                                : WideCharToMultiByte(m_codePage, 0, m_wide.data(), units, &m_text[start], units * 3,
                                                      nullptr, nullptr);
    m_text.resize(start + static_cast<std::size_t>(size));
    if (!AreDefined({text, length}, units))
        m_sourceLoss = "bytes that are invalid in " + m_sourceName;
    if (m_codePage != CP_UTF8 && !IsKept(start, units))
        AddLoss("characters that " + m_name + " cannot represent");
    if (m_text.size() - start > m_maxFieldLength) {
        m_text.resize(start + FittingLength(units));
        AddLoss("a field, truncated, of more than " + std::to_string(m_maxFieldLength) + " bytes in " + m_name);
    }
    m_lengths.push_back(static_cast<WORD>(m_text.size() - start));
}

/// The length of as many whole characters of the field as m_maxFieldLength allows.
std::size_t CRowEncoder::FittingLength(int units) const {
    const auto length = [this](int count) {
        const bool splits = (m_wide[static_cast<std::size_t>(count) - 1] & 0xFC00) == 0xD800;
        const int whole = splits ? count - 1 : count;
        return whole == 0 ? std::size_t{0}
                          : static_cast<std::size_t>(WideCharToMultiByte(m_codePage, 0, m_wide.data(), whole, nullptr,
                                                                         0, nullptr, nullptr));
    };
    int fits = 1;
    for (int tooMany = units; tooMany - fits > 1;) {
        const int middle = fits + (tooMany - fits) / 2;
        (length(middle) <= m_maxFieldLength ? fits : tooMany) = middle;
    }
    return length(fits);
}

/// Whether the source's bytes mean something.
bool CRowEncoder::AreDefined(std::string_view text, int units) const {
    const std::u16string_view wide(m_wide.data(), static_cast<std::size_t>(units));
    if (wide.find_first_of(standIns) == std::u16string_view::npos)
        return true;
    while (!text.empty()) {
        const std::string_view character = FirstCharacter(text);
        if (!IsDefined(m_sourcePage, character))
            return false;
        text.remove_prefix(character.size());
    }
    return true;
}

/// Several pages have two codes for one character, so a round trip that changes bytes is not an error by itself; it
/// is one if they become a default character for undefined bytes.
bool CRowEncoder::IsDefined(unsigned codePage, std::string_view character) {
    std::array<WCHAR, 4> decoded{};
    std::array<char, 4> back{};
    MultiByteToWideChar(codePage, 0, character.data(), static_cast<int>(character.size()), decoded.data(), 4);
    const int size = WideCharToMultiByte(codePage, 0, decoded.data(), 1, back.data(), 4, nullptr, nullptr);
    return standIns.find(decoded[0]) == std::u16string_view::npos ||
           character == std::string_view(back.data(), static_cast<std::size_t>(size));
}

std::string_view CRowEncoder::FirstCharacter(std::string_view text) {
    constexpr std::size_t longest = 4;
    std::size_t length = 1;
    while (length < longest && KeptTextLength(text.data(), text.size(), length) == 0)
        ++length;
    return text.substr(0, length);
}

/// Whether the encoded field converts back to its characters; a best fit does not.
bool CRowEncoder::IsKept(std::size_t start, int units) {
    const int size = static_cast<int>(m_text.size() - start);
    m_back.resize(std::max<std::size_t>(m_back.size(), static_cast<std::size_t>(size)));
    const int back = size == 0 ? 0 : MultiByteToWideChar(m_codePage, 0, &m_text[start], size, m_back.data(), size);
    return back == units && std::equal(m_back.begin(), m_back.begin() + back, m_wide.begin());
}

void CRowEncoder::AddLoss(const std::string& what) {
    if (m_loss.find(what) == std::string::npos)
        m_loss += (m_loss.empty() ? "" : ", ") + what;
}

} // namespace NSTQ::Tool
