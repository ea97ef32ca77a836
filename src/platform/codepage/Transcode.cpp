#include "platform/codepage/Transcode.h"

#include "platform/codepage/CodePageTables.h"
#include "platform/codepage/PlainText.h"
#include "platform/codepage/Utf8.h"
#include "scan/Kernel.h"
#include "tqcAccess/CodePage.h"

#include <cstring>

namespace NSTQ::Platform {

namespace {

/// Copies the ASCII bytes at `text` to `to`, which is not above it, and advances both pointers.
void MoveAscii(unsigned char*& to, const unsigned char*& text, const unsigned char* end) {
    std::uint64_t word = 0;
    while (static_cast<std::size_t>(end - text) >= sizeof word) {
        std::memcpy(&word, text, sizeof word);
        const std::uint64_t high = word & 0x8080808080808080U;
        if (high == 0) {
            std::memcpy(to, &word, sizeof word);
            to += sizeof word;
            text += sizeof word;
            continue;
        }
        const std::size_t run = CountAscii(high);
        // The whole word may be written if it ends before the bytes after the run.
        if (static_cast<std::size_t>(text - to) + run < sizeof word)
            break;
        std::memcpy(to, &word, sizeof word);
        to += run;
        text += run;
        return;
    }
    while (text != end && *text < 0x80)
        *to++ = *text++;
}

/// Converts the characters at `text` that have three bytes and take two in the page, which are the most frequent ones
/// after ASCII, and advances both pointers.
void ConvertWideCharacters(unsigned char*& to, const unsigned char*& text, const unsigned char* end,
                           const CCodePageTables& page) {
    const unsigned short* const starts = page.m_blockStarts;
    const unsigned short* const blocks = page.m_blocks;
    const unsigned char* from = text;
    unsigned char* out = to;
    while (end - from >= 3) {
        const unsigned lead = from[0], second = from[1], third = from[2];
        if ((((lead ^ 0xE0U) & 0xF0U) | (((second ^ 0x80U) | (third ^ 0x80U)) & 0xC0U)) != 0)
            break;
        const unsigned block = (lead & 0x0FU) << 6 | (second & 0x3FU);
        // Overlong forms and surrogates.
        if (block < 0x20 || block - 0x360 < 0x20)
            break;
        const unsigned bytes = blocks[starts[block] + (third & 0x3FU)];
        if (bytes <= 0xFF)
            break;
        out[0] = static_cast<unsigned char>(bytes >> 8);
        out[1] = static_cast<unsigned char>(bytes);
        out += 2;
        from += 3;
    }
    text = from;
    to = out;
}

/// Writes the bytes of a character above U+007F in a page other than UTF-8.
unsigned char* PutCharacter(unsigned char* to, const CCodePageTables& page, char32_t value) {
    if (value > 0xFFFF) {
        *to++ = '?';
        *to++ = '?';
        return to;
    }
    const unsigned bytes = page.Encode(static_cast<char16_t>(value));
    if (bytes > 0xFF)
        *to++ = static_cast<unsigned char>(bytes >> 8);
    *to++ = static_cast<unsigned char>(bytes != 0 ? bytes & 0xFF : '?');
    return to;
}

/// Copies pieces as long as they fit and counts all of them.
class CBoundedCopy {
public:
    CBoundedCopy(unsigned char* out, std::size_t room) : m_out(out), m_room(room) {}

    /// A piece that may be truncated at the end of the buffer, at a UTF-8 character.
    void PutValid(const unsigned char* piece, std::size_t length) {
        if (m_needed < m_room) {
            std::size_t kept = length;
            if (kept > m_room - m_needed) {
                kept = m_room - m_needed;
                while (IsUtf8Trail(piece[kept]))
                    --kept;
            }
            std::memmove(m_out + m_needed, piece, kept);
        }
        // Beyond the buffer after a truncation, so that no shorter piece follows the gap.
        m_needed += length;
    }
    std::size_t GetNeeded() const { return m_needed; }

private:
    unsigned char* m_out;
    std::size_t m_room;
    std::size_t m_needed = 0;
};

} // namespace

std::size_t ConvertUtf8ToAnsi(unsigned char* text, std::size_t length) {
    const CCodePageTables& page = GetAnsiTables();
    if (page.IsUtf8())
        return length;
    const unsigned char* const end = text + length;
    const unsigned char* from = SkipAscii(text, end);
    unsigned char* to = text + (from - text);
    while (from != end) {
        ConvertWideCharacters(to, from, end, page);
        if (from != end && *from >= 0x80) {
            const CUtf8Character character = DecodeUtf8(from, static_cast<std::size_t>(end - from));
            from += character.m_length;
            to = PutCharacter(to, page, character.m_value);
        }
        if (from != end && *from < 0x80)
            MoveAscii(to, from, end);
    }
    return static_cast<std::size_t>(to - text);
}

ETextKind GetTextKind(std::string_view utf8) {
    constexpr std::uint64_t topBits = 0x8080808080808080U;
    std::uint64_t controls = 0;
    std::uint64_t all = 0;
    const auto take = [&](std::uint64_t word) {
        controls |= (word - 0x2020202020202020U) & ~word & topBits;
        all |= word;
    };
    std::string_view rest = utf8;
    std::uint64_t word = 0;
    for (; rest.size() >= sizeof word; rest.remove_prefix(sizeof word)) {
        std::memcpy(&word, rest.data(), sizeof word);
        take(word);
    }
    word = 0x2020202020202020U;
    for (const char c : rest)
        word = word << 8 | static_cast<unsigned char>(c);
    take(word);
    if (controls != 0 || utf8.starts_with(' ') || utf8.ends_with(' '))
        return ETextKind::Other;
    if ((all & topBits) == 0)
        return ETextKind::Ascii;
    return CountValidUtf8(utf8.data(), utf8.size()) == utf8.size() ? ETextKind::Utf8 : ETextKind::Other;
}

std::size_t CountValidUtf8(const char* text, std::size_t length) {
    const auto* const start = reinterpret_cast<const unsigned char*>(text);
    const unsigned char* const end = start + length;
    const auto countBlocks = Scan::GetKernel().countUtf8;
    const unsigned char* at = start + (countBlocks != nullptr ? countBlocks(start, length) : 0);
    while (at != end) {
        if (*at < 0x80)
            at = SkipAscii(at, end);
        if (at == end)
            break;
        const CUtf8Character character = DecodeUtf8(at, static_cast<std::size_t>(end - at));
        if (!character.m_isValid)
            break;
        at += character.m_length;
    }
    return static_cast<std::size_t>(at - start);
}

std::size_t MendUtf8(const unsigned char* text, std::size_t length, unsigned char* out, std::size_t room) {
    static constexpr unsigned char replacement[] = {0xEF, 0xBF, 0xBD};
    CBoundedCopy copy(out, room);
    for (std::size_t at = 0; at < length;) {
        const std::size_t valid = CountValidUtf8(reinterpret_cast<const char*>(text + at), length - at);
        copy.PutValid(text + at, valid);
        at += valid;
        if (at < length) {
            // Read before the replacement may overwrite it.
            at += DecodeUtf8(text + at, length - at).m_length;
            copy.PutValid(replacement, sizeof replacement);
        }
    }
    return copy.GetNeeded();
}

} // namespace NSTQ::Platform
