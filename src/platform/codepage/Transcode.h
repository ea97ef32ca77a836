// Converts UTF-8 text to the ANSI code page in one pass: the result of MultiByteToWideChar(CP_UTF8) and
// WideCharToMultiByte(CP_ACP) with flags 0, without the UTF-16 text between them. NULs are characters like any other.
// May be called from every thread.
#pragma once

#include <cstddef>
#include <string_view>

namespace NSTQ::Platform {

struct SBoundedText {
    std::size_t length; ///< bytes written
    bool isComplete;    ///< whether that is the whole text
};

/// Converts UTF-16 to the ANSI code page, as WideCharToMultiByte with flags 0, but truncates to whole characters at
/// the end of `out` with its `room` bytes. Adds no NUL.
SBoundedText ConvertWideToAnsi(std::u16string_view text, char* out, std::size_t room);

/// How many bytes a byte of the ANSI code page takes in UTF-8 at most.
inline constexpr std::size_t maxUtf8PerByte = 3;

struct SUtf8Text {
    std::size_t length; ///< bytes written
    bool isDefined;     ///< whether the page defines all of the text, so that no default character stands in it
};

/// Converts text of the ANSI code page to UTF-8: the result of MultiByteToWideChar and WideCharToMultiByte with flags
/// 0, without the UTF-16 text between them. `out` must have room for maxUtf8PerByte times the bytes of `text`.
SUtf8Text ConvertAnsiToUtf8(std::string_view text, char* out);

/// Whether every character of `text` is defined in the ANSI code page, so that MultiByteToWideChar substitutes none.
bool IsDefinedInAnsi(std::string_view text);

/// Converts the `length` bytes of `text` in place and returns the new length in bytes, which is never above `length`:
/// in the pages of one and two bytes every character takes at most two, every character that UTF-8 writes with one
/// byte takes one, a character above U+FFFF gives "??" for its four, and each maximal subpart of an invalid sequence
/// gives '?'. With the ANSI code page 65001 nothing is changed and `length` is returned: an invalid byte would need
/// room for the three bytes of U+FFFD, so use MendUtf8 there.
std::size_t ConvertUtf8ToAnsi(unsigned char* text, std::size_t length);

/// Copies `text` to `out` with each maximal subpart of an invalid sequence replaced by U+FFFD. `out` has `room`
/// bytes; it may be null when `room` is 0. It may overlap `text` only from below, and only if the result does not end
/// after `text` does: since a replacement is never shorter than what it replaces, writing then never overtakes
/// reading. Returns the bytes that the whole result needs, at most 3 * `length`. When that is above `room`, `out`
/// holds the first `room` bytes of the result, minus an incomplete character; the bytes after it are unchanged.
std::size_t MendUtf8(const unsigned char* text, std::size_t length, unsigned char* out, std::size_t room);

} // namespace NSTQ::Platform
