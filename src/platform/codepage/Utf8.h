// The UTF-8 rules, and fast handling of ASCII, for the conversions.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace NSTQ::Platform {

inline constexpr char32_t replacementCharacter = 0xFFFD;

/// One character of a text, or the maximal subpart of an invalid sequence: then `m_value` is U+FFFD, which a valid
/// sequence may also give.
struct CUtf8Character {
    char32_t m_value;
    unsigned char m_length;
    bool m_isValid;
};

/// The number of bytes of a sequence that begins with `byte`; 1 for ASCII and for a byte that begins none.
inline unsigned char GetUtf8Length(unsigned char byte) {
    if (byte < 0xC2 || byte > 0xF4)
        return 1;
    return byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

inline bool IsUtf8Trail(unsigned char byte) {
    return (byte & 0xC0U) == 0x80;
}

/// Reads the character at `text`, which has `room` bytes (at least one).
inline CUtf8Character DecodeUtf8(const unsigned char* text, std::size_t room) {
    const unsigned lead = text[0];
    const auto bits = [text](std::size_t at) { return text[at] & 0x3FU; };
    // The most frequent ones after ASCII: three bytes whose first one does not restrict the second one.
    if (lead > 0xE0 && lead < 0xF0 && lead != 0xED && room >= 3 && IsUtf8Trail(text[1]) && IsUtf8Trail(text[2]))
        return {(lead & 0x0F) << 12 | bits(1) << 6 | bits(2), 3, true};
    if (lead < 0x80)
        return {lead, 1, true};
    const unsigned char length = GetUtf8Length(text[0]);
    // The second byte alone excludes overlong forms, surrogates and values above U+10FFFF.
    const unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    const unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    if (length == 1 || room < 2 || text[1] < lowest || text[1] > highest)
        return {replacementCharacter, 1, false};
    // Removes the length bits of the lead byte.
    char32_t value = (lead & (0x7FU >> length)) << 6 | bits(1);
    for (unsigned char at = 2; at < length; ++at) {
        if (room <= at || !IsUtf8Trail(text[at]))
            return {replacementCharacter, at, false};
        value = value << 6 | bits(at);
    }
    return {value, length, true};
}

/// How many bytes of a word in memory come before the first one above 0x7F, of which the word has the top bits.
inline std::size_t CountAscii(std::uint64_t topBits) {
    const int bits =
        std::endian::native == std::endian::little ? std::countr_zero(topBits) : std::countl_zero(topBits);
    return static_cast<std::size_t>(bits) / 8;
}

/// Where the first byte above 0x7F is, or `end`.
inline const unsigned char* SkipAscii(const unsigned char* text, const unsigned char* end) {
    std::uint64_t word = 0;
    while (static_cast<std::size_t>(end - text) >= sizeof word) {
        std::memcpy(&word, text, sizeof word);
        const std::uint64_t topBits = word & 0x8080808080808080U;
        if (topBits != 0)
            return text + CountAscii(topBits);
        text += sizeof word;
    }
    while (text != end && *text < 0x80)
        ++text;
    return text;
}

/// Where the first UTF-16 unit above 0x7F is, or `end`.
inline const char16_t* SkipAscii(const char16_t* text, const char16_t* end) {
    std::uint64_t word = 0;
    while (end - text >= 4) {
        std::memcpy(&word, text, sizeof word);
        if ((word & 0xFF80FF80FF80FF80U) != 0)
            break;
        text += 4;
    }
    while (text != end && *text < 0x80)
        ++text;
    return text;
}

} // namespace NSTQ::Platform
