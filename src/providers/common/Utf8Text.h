// UTF-8, as XML documents hold it here, to UTF-16, as values are handed out.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace NSTQ::Providers {

inline constexpr std::size_t longestUtf8Character = 4;

/// Writes a character (up to 0x10FFFF) and returns how many bytes it took.
std::size_t EncodeUtf8(char32_t character, unsigned char* target);

/// Appends the text; each invalid part of a sequence gives U+FFFD.
void AppendUtf16(std::string_view text, std::u16string& target);
std::u16string ToUtf16(std::string_view text);

/// Takes back the escapes _xHHHH_ (a UTF-16 unit that XML cannot carry, in hexadecimal digits), in place, from
/// `begin` on.
void TakeBackEscapes(std::u16string& text, std::size_t begin);

} // namespace NSTQ::Providers
