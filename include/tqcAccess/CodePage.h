// The system's multibyte (ANSI) code page and the conversions that go with it.
//
// On Linux the code page is a setting of this layer and not of the locale: the library reads no environment
// variable and never calls setlocale. A host sets it once, before it uses anything else of the library, from one
// thread; afterwards all functions here are thread-safe. A thread may have another one for a while, with
// CThreadCodePage, so that sources in different encodings can be read at the same time.
//
// Code pages: 932 (Japanese, the default), 1252, 936, 949, 950 and 65001 (UTF-8).
// A "double-byte character" of page 65001 is a whole UTF-8 sequence of two to four bytes.
#pragma once

#include "Export.h"
#include "Types.h"

#include <cstddef>

namespace NSTQ::Platform {

// In a program that includes <windows.h> first, the macros of that header; see ComError.h.
#if !defined(CP_ACP)
inline constexpr unsigned CP_ACP = 0;      ///< the ANSI code page that is set
inline constexpr unsigned CP_UTF8 = 65001; ///< UTF-8
#endif

/// Makes `codePage` the ANSI code page. An unsupported one changes nothing, and GetLastError returns 87 (invalid
/// parameter). CP_ACP changes nothing.
TQCACCESS_API void SetAnsiCodePage(unsigned codePage);

/// The ANSI code page of this thread: its own one, else the one that is set.
TQCACCESS_API unsigned GetAnsiCodePage();

/// Gives the thread that creates it an ANSI code page of its own until it is destroyed, on the same thread; then the
/// one before applies again. Everything that is done with a source (description, reader, writer) must be done while
/// the same page applies.
class TQCACCESS_API CThreadCodePage {
public:
    /// `codePage` and `pathCodePage` are as for SetAnsiCodePage: CP_ACP and an unsupported page stand for the one
    /// that applies now. Paths are converted by the second one, so that a file can have a name that the code page of
    /// its content cannot represent; all other texts by the first one.
    explicit CThreadCodePage(unsigned codePage, unsigned pathCodePage);
    /// The same page for texts and paths.
    explicit CThreadCodePage(unsigned codePage) : CThreadCodePage(codePage, codePage) {}
    CThreadCodePage(const CThreadCodePage&) = delete;
    CThreadCodePage& operator=(const CThreadCodePage&) = delete;
    ~CThreadCodePage();

private:
    unsigned m_codePageBefore; ///< 0 when the thread had none
    unsigned m_pathCodePageBefore;
};

/// Whether `codePage` is one of those above or CP_ACP.
TQCACCESS_API bool IsCodePageSupported(unsigned codePage);

/// Text to UTF-16, with flags 0: each maximal subpart of an invalid UTF-8 sequence becomes U+FFFD, a byte or pair
/// that the page does not define becomes the default character of the page, and so does a lead byte before a NUL or
/// at the end, so that a NUL is never consumed. `length` is in bytes; -1 means up to and including the first NUL.
/// `wideLength` is the capacity of `wide`; 0 returns the number of units needed and writes nothing. Returns the
/// number of units. Returns 0 on failure and sets the last error: 87 for an unsupported page, flags other than 0, a
/// null or empty text, a negative length other than -1, a negative capacity, a null buffer or the text itself for the
/// result, and a result of more than 2^31 - 1; 122 (insufficient buffer) when the capacity is too small: `wide` then
/// contains the beginning of the result, in whole characters.
TQCACCESS_API int MultiByteToWideChar(unsigned codePage, DWORD flags, const char* text, int length, WCHAR* wide,
                                      int wideLength);

/// UTF-16 to text, with flags 0: a character that the page cannot represent becomes its best fit, else '?'; each half
/// of a surrogate pair counts as a character in a double-byte page. In UTF-8 an unpaired surrogate becomes U+FFFD.
/// Arguments and results as in MultiByteToWideChar, with the roles of bytes and units exchanged.
/// `defaultChar` (one byte, may be null) replaces the '?'; `usedDefault` (may be null) receives whether it was used,
/// and is unchanged on failure. Both must be null for UTF-8 (else 87).
TQCACCESS_API int WideCharToMultiByte(unsigned codePage, DWORD flags, const WCHAR* wide, int wideLength, char* text,
                                      int length, const char* defaultChar, bool* usedDefault);

/// -1 when the byte at `position` begins a double-byte character, determined from `start` in the ANSI code page; else
/// 0, also when a NUL comes first. Only the byte itself counts, whether or not a valid trail byte follows.
TQCACCESS_API int _ismbslead(const unsigned char* start, const unsigned char* position);

/// Lower case of one character of the ANSI code page: 'A' to 'Z' for single bytes, the full-width Latin letters for
/// double-byte values; every other value is returned unchanged. The value of a character is its bytes, the first one
/// highest: 0x8260 for a full-width 'A' in 932, 0xEFBCA1 in 65001.
TQCACCESS_API unsigned _mbctolower(unsigned character);

/// Compares two NUL-terminated texts character by character in the ANSI code page: negative, 0 or positive. A
/// double-byte character is above every single byte; a lead byte right before the NUL counts as the end of the text.
TQCACCESS_API int _mbscmp(const unsigned char* left, const unsigned char* right);

/// How many of the first `limit` bytes of a text of `length` bytes can be kept without splitting a double-byte
/// character: `length` when that is not above `limit`, else `limit` minus an incomplete character at the end. The
/// lead byte determines the length of a character, whether or not its other bytes follow; in 65001 a continuation
/// byte without a lead byte is a character of its own.
TQCACCESS_API std::size_t KeptTextLength(const char* text, std::size_t length, std::size_t limit);

/// How many of the `length` bytes of a text are well-formed UTF-8, up to the first invalid byte or the beginning of a
/// sequence that is incomplete at the end; `length` when all are. NULs are characters like any other.
TQCACCESS_API std::size_t CountValidUtf8(const char* text, std::size_t length);

} // namespace NSTQ::Platform
