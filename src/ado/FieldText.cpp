#include "FieldText.h"

#include "SCDataAccessDefine.h"
#include "platform/codepage/PlainText.h"
#include "platform/codepage/Transcode.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

namespace NSTQ::NSTQCore {
namespace {

constexpr char SPACE = SCDataAccessDefine::SPACE_CODE;
constexpr char TAB = SCDataAccessDefine::TAB_CODE;

/// Bytes that are examined together.
using TWord = std::uint64_t;
constexpr TWord ALL_SPACES = 0x2020202020202020U;

TWord LoadWord(const char* text) {
    TWord word = 0;
    std::memcpy(&word, text, sizeof word);
    return word;
}

bool HasWord(const char* begin, const char* end) {
    return static_cast<std::size_t>(end - begin) >= sizeof(TWord);
}

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < static_cast<unsigned char>(SPACE);
}

char* FindControl(char* text, const char* end) {
    constexpr TWord highBits = 0x8080808080808080U;
    while (HasWord(text, end) && ((LoadWord(text) - ALL_SPACES) & ~LoadWord(text) & highBits) == 0)
        text += sizeof(TWord);
    while (text != end && !IsControl(*text))
        ++text;
    return text;
}

char* SkipSpaces(char* text, const char* end) {
    while (HasWord(text, end) && LoadWord(text) == ALL_SPACES)
        text += sizeof(TWord);
    while (text != end && *text == SPACE)
        ++text;
    return text;
}

/// Cleans a text that arrives in pieces, each in place.
class CTextCleaner {
public:
    CTextCleaner(char* text, bool bSkipsLeading, bool bKeepsLineEnds)
        : m_pTrimmedTo(text), m_bAtStart(bSkipsLeading), m_bKeepsLineEnds(bKeepsLineEnds) {}

    /// Returns the new end of the piece.
    char* Clean(char* from, char* const end) {
        char* to = from;
        if (m_bAtStart)
            from = SkipLeading(from, end);
        while (from != end) {
            char* const control = FindControl(from, end);
            if (from != to)
                std::memmove(to, from, static_cast<std::size_t>(control - from));
            to += control - from;
            from = control;
            if (from != end)
                to = CleanControl(*from++, to);
        }
        return to;
    }

    /// Removes the trailing spaces.
    char* Trim(char* end) const {
        while (HasWord(m_pTrimmedTo, end) && LoadWord(end - sizeof(TWord)) == ALL_SPACES)
            end -= sizeof(TWord);
        while (end != m_pTrimmedTo && end[-1] == SPACE)
            --end;
        return end;
    }

private:
    char* SkipLeading(char* from, const char* end) {
        while ((from = SkipSpaces(from, end)) != end && IsControl(*from) &&
               !(m_bKeepsLineEnds && Platform::IsLineEnd(*from)))
            ++from;
        m_bAtStart = from == end;
        return from;
    }

    char* CleanControl(char c, char* to) {
        if (c == TAB) {
            *to++ = SPACE;
            m_pTrimmedTo = to;
        } else if (m_bKeepsLineEnds && Platform::IsLineEnd(c)) {
            *to++ = c;
        }
        return to;
    }

    const char* m_pTrimmedTo; ///< after the last space that was a TAB, which trimming keeps
    bool m_bAtStart;
    const bool m_bKeepsLineEnds;
};

/// How many units of a text to convert next, into `room` bytes: as many as certainly fit, and at least one
/// character. No page needs more than three bytes for a unit.
std::size_t GetPieceLength(std::u16string_view text, std::size_t room) {
    constexpr std::size_t bytesPerUnit = 3;
    const std::size_t units = std::max<std::size_t>(room / bytesPerUnit, 1);
    if (units >= text.size() || (text[units - 1] & 0xFC00) != 0xD800)
        return std::min(units, text.size());
    return units > 1 ? units - 1 : 2;
}

std::u16string_view TrimSpaces(std::u16string_view text) {
    constexpr std::size_t units = 64;
    static constexpr auto spaces = [] {
        std::array<char16_t, units> result{};
        result.fill(u' ');
        return result;
    }();
    while (text.size() >= units && std::memcmp(text.data() + text.size() - units, spaces.data(), sizeof spaces) == 0)
        text.remove_suffix(units);
    while (text.ends_with(u' '))
        text.remove_suffix(1);
    return text;
}

bool HasContent(std::u16string_view text, bool bKeepsLineEnds) {
    return std::any_of(text.begin(), text.end(), [=](char16_t unit) {
        return unit > u' ' || unit == u'\t' || (bKeepsLineEnds && Platform::IsLineEnd(unit));
    });
}

} // namespace

SFieldText MakeFieldText(std::u16string_view value, char* buffer, std::size_t size, bool bKeepLineEnds) {
    value = TrimSpaces(value); // cells of nothing but spaces would be converted only to be dropped
    CTextCleaner cleaner(buffer, true, bKeepLineEnds);
    char* end = buffer;
    while (!value.empty()) {
        const std::size_t room = size - static_cast<std::size_t>(end - buffer);
        const std::size_t units = GetPieceLength(value, room);
        const auto piece = Platform::ConvertWideToAnsi(value.substr(0, units), end, room);
        if (!piece.isComplete)
            break;
        value.remove_prefix(units);
        end = bKeepLineEnds ? cleaner.Clean(end, end + piece.length) : end + piece.length;
    }
    if (!bKeepLineEnds)
        end = cleaner.Clean(buffer, end);
    return {static_cast<std::size_t>(cleaner.Trim(end) - buffer), HasContent(value, bKeepLineEnds)};
}

std::size_t CleanName(char* name, std::size_t length) {
    CTextCleaner cleaner(name, false, false);
    return static_cast<std::size_t>(cleaner.Trim(cleaner.Clean(name, name + length)) - name);
}

} // namespace NSTQ::NSTQCore
