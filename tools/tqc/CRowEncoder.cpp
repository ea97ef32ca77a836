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

/// What undefined bytes become, by the page.
constexpr std::u16string_view STAND_INS = u"?\u30FB\uFFFD";

} // namespace

CRowEncoder::CRowEncoder(unsigned codePage, std::size_t fieldLengthMax)
    : m_uSourcePage(GetAnsiCodePage()), m_uCodePage(codePage), m_fieldLengthMax(fieldLengthMax),
      m_strName(SCCodePageNames::Describe(codePage)) {}

bool CRowEncoder::IsAscii(const char* pText, std::size_t length) {
    std::uint64_t high = 0;
    for (; length >= sizeof high; pText += sizeof high, length -= sizeof high) {
        std::uint64_t word = 0;
        std::memcpy(&word, pText, sizeof word);
        high |= word;
    }
    for (; length > 0; ++pText, --length)
        high |= static_cast<std::uint64_t>(static_cast<unsigned char>(*pText));
    return (high & 0x8080808080808080U) == 0;
}

/// Fields that a reader has put one behind the other, with a NUL between, are looked at in one go.
bool CRowEncoder::AreUtf8(const char* const* ppFields, const WORD* pLengths, DWORD dwCount) {
    for (DWORD i = 0; i < dwCount;) {
        const char* const begin = ppFields[i];
        const char* end = begin + pLengths[i];
        while (++i < dwCount && ppFields[i] == end + 1)
            end = ppFields[i] + pLengths[i];
        const auto size = static_cast<std::size_t>(end - begin);
        if (CountValidUtf8(begin, size) != size)
            return false;
    }
    return true;
}

bool CRowEncoder::StayAsTheyAre(const char* const* ppFields, const WORD* pLengths, DWORD dwCount) const {
    if (m_uCodePage == m_uSourcePage)
        return m_uCodePage != CP_UTF8 || AreUtf8(ppFields, pLengths, dwCount);
    bool isAscii = true;
    for (DWORD i = 0; i < dwCount && isAscii; ++i)
        isAscii = IsAscii(ppFields[i], pLengths[i]);
    return isAscii;
}

void CRowEncoder::Encode(const char**& ppFields, const WORD*& pLengths, DWORD dwCount) {
    m_strSourceLoss.clear();
    m_strLoss.clear();
    if (StayAsTheyAre(ppFields, pLengths, dwCount))
        return;
    m_strText.clear();
    m_vecStarts.clear();
    m_vecLengths.clear();
    for (DWORD i = 0; i < dwCount; ++i)
        EncodeField(ppFields[i], pLengths[i]);
    m_vecFields.clear();
    for (const std::size_t start : m_vecStarts)
        m_vecFields.push_back(m_strText.data() + start);
    ppFields = m_vecFields.data();
    pLengths = m_vecLengths.data();
}

void CRowEncoder::EncodeField(const char* pText, WORD wLength) {
    const std::size_t start = m_strText.size();
    m_vecStarts.push_back(start);
    m_vecWide.resize(std::max<std::size_t>(m_vecWide.size(), wLength));
    const int units = MultiByteToWideChar(CP_ACP, 0, pText, wLength, m_vecWide.data(), wLength);
    // No page takes more than three bytes a unit.
    m_strText.resize(start + static_cast<std::size_t>(units) * 3);
    const int size = units == 0 ? 0
                                : WideCharToMultiByte(m_uCodePage, 0, m_vecWide.data(), units, &m_strText[start],
                                                      units * 3, nullptr, nullptr);
    m_strText.resize(start + static_cast<std::size_t>(size));
    if (!AreDefined({pText, wLength}, units))
        m_strSourceLoss = "bytes that are not valid " + SCCodePageNames::NameOf(m_uSourcePage);
    if (m_uCodePage != CP_UTF8 && !IsKept(start, units))
        AddLoss("characters that " + m_strName + " does not have");
    if (m_strText.size() - start > m_fieldLengthMax) {
        m_strText.resize(start + FittingLength(units));
        AddLoss("a field, cut, of more than " + std::to_string(m_fieldLengthMax) + " bytes in " + m_strName);
    }
    m_vecLengths.push_back(static_cast<WORD>(m_strText.size() - start));
}

/// The length of as many whole characters of the field as m_fieldLengthMax allows.
std::size_t CRowEncoder::FittingLength(int units) const {
    const auto length = [this](int count) {
        const bool splits = (m_vecWide[static_cast<std::size_t>(count) - 1] & 0xFC00) == 0xD800;
        const int whole = splits ? count - 1 : count;
        return whole == 0 ? std::size_t{0}
                          : static_cast<std::size_t>(WideCharToMultiByte(m_uCodePage, 0, m_vecWide.data(), whole,
                                                                         nullptr, 0, nullptr, nullptr));
    };
    int fits = 1;
    for (int tooMany = units; tooMany - fits > 1;) {
        const int middle = fits + (tooMany - fits) / 2;
        (length(middle) <= m_fieldLengthMax ? fits : tooMany) = middle;
    }
    return length(fits);
}

/// Whether the source's bytes mean something.
bool CRowEncoder::AreDefined(std::string_view text, int units) const {
    const std::u16string_view wide(m_vecWide.data(), static_cast<std::size_t>(units));
    if (wide.find_first_of(STAND_INS) == std::u16string_view::npos)
        return true;
    while (!text.empty()) {
        const std::string_view character = FirstCharacter(text);
        if (!IsDefined(m_uSourcePage, character))
            return false;
        text.remove_prefix(character.size());
    }
    return true;
}

/// Several pages give one character two codes, so bytes that do not come back are no fault by themselves; they are
/// where they become what stands in for undefined ones.
bool CRowEncoder::IsDefined(unsigned codePage, std::string_view character) {
    std::array<WCHAR, 4> decoded{};
    std::array<char, 4> back{};
    MultiByteToWideChar(codePage, 0, character.data(), static_cast<int>(character.size()), decoded.data(), 4);
    const int size = WideCharToMultiByte(codePage, 0, decoded.data(), 1, back.data(), 4, nullptr, nullptr);
    return STAND_INS.find(decoded[0]) == std::u16string_view::npos ||
           character == std::string_view(back.data(), static_cast<std::size_t>(size));
}

std::string_view CRowEncoder::FirstCharacter(std::string_view text) {
    constexpr std::size_t longest = 4;
    std::size_t length = 1;
    while (length < longest && KeptTextLength(text.data(), text.size(), length) == 0)
        ++length;
    return text.substr(0, length);
}

/// Whether the encoded field leads back to its characters; a best fit does not.
bool CRowEncoder::IsKept(std::size_t start, int units) {
    const int size = static_cast<int>(m_strText.size() - start);
    m_vecBack.resize(std::max<std::size_t>(m_vecBack.size(), static_cast<std::size_t>(size)));
    const int back =
        size == 0 ? 0 : MultiByteToWideChar(m_uCodePage, 0, &m_strText[start], size, m_vecBack.data(), size);
    return back == units && std::equal(m_vecBack.begin(), m_vecBack.begin() + back, m_vecWide.begin());
}

void CRowEncoder::AddLoss(const std::string& what) {
    if (m_strLoss.find(what) == std::string::npos)
        m_strLoss += (m_strLoss.empty() ? "" : ", ") + what;
}

} // namespace NSTQ::Tool
