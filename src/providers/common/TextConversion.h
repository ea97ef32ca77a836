// Texts as files hold them, in UTF-8 or in a code page older than Unicode, made UTF-16, as values are handed out.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace NSTQ::Providers {

inline constexpr std::size_t longestUtf8Character = 4;

/// Writes a character (up to 0x10FFFF) and returns how many bytes it took.
std::size_t EncodeUtf8(char32_t character, unsigned char* target);

/// The part of a text that the largest field of a reader, 65535 bytes, can show in any code page, and a little more,
/// so that the reader detects the truncation: its first 65536 characters, not counting control bytes and the blanks
/// before them, up to one that is more than a blank. A shorter text is returned unchanged.
std::string_view CutForField(std::string_view text);

/// Writes the text to `target`, which has room for as many units as there are bytes; each invalid part of a sequence
/// gives U+FFFD. Returns how many units it took.
std::size_t ConvertToUtf16(std::string_view text, char16_t* target);
/// Appends the text; each invalid part of a sequence gives U+FFFD.
void AppendUtf16(std::string_view text, std::u16string& target);
std::u16string ToUtf16(std::string_view text);

/// Decodes the escapes _xHHHH_ (a UTF-16 unit that XML cannot contain, in hexadecimal digits), in place, from
/// `begin`.
void TakeBackEscapes(std::u16string& text, std::size_t begin);
/// The same in UTF-8, where half of a surrogate pair becomes U+FFFD.
void TakeBackEscapes(std::string& text);
/// Whether there may be any.
inline bool MayHaveEscapes(std::string_view text) {
    return text.find("_x") != std::string_view::npos;
}

/// UTF-16 as UTF-8, with U+FFFD for half of a surrogate pair. The view is of `target`, whose memory is reused.
std::string_view ToUtf8(std::u16string_view wide, std::string& target);

/// Whether this library has a table of that page: 874, 932, 936, 949, 950, 1250 to 1258, 10000 and 65001.
bool HasPageTable(unsigned codePage);

/// Converts a text in `codePage` to `to`, which has room for as many units as there are bytes, and returns the number
/// of units. Throws CSourceError for a text that is not ASCII in a page without a table.
std::size_t DecodePageText(std::span<const unsigned char> bytes, unsigned codePage, char16_t* to);

} // namespace NSTQ::Providers
