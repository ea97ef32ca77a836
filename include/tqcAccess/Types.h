// One alias per width: the names and widths of the Windows types that the interface is written in.
//
// Where `long` has 64 bits the aliases keep the 32 bits that records, lengths and error codes have on Windows.
#pragma once

#if defined(_WIN32)
#include <windows.h>
#else
#include <cstdint>
#endif

namespace NSTQ {

#if defined(_WIN32)
using DWORD = ::DWORD;
using LONG = ::LONG;
using WORD = ::WORD;
using LONGLONG = ::LONGLONG;
using WCHAR = ::WCHAR;
using HANDLE = ::HANDLE;
using FILETIME = ::FILETIME;
#else
using DWORD = std::uint32_t;   ///< 32 bits, unsigned
using LONG = std::int32_t;     ///< 32 bits, signed
using WORD = std::uint16_t;    ///< 16 bits, unsigned
using LONGLONG = std::int64_t; ///< 64 bits, signed
/// One UTF-16 unit.
using WCHAR = char16_t;
/// An open file or search; null means none.
using HANDLE = void*;

/// A time as a 64-bit count of 100-nanosecond steps since 1601-01-01 UTC, in two halves.
struct FILETIME {
    DWORD dwLowDateTime;  ///< the lower half
    DWORD dwHighDateTime; ///< the higher half
};
#endif

static_assert(sizeof(DWORD) == 4 && sizeof(LONG) == 4 && sizeof(WORD) == 2);
static_assert(sizeof(LONGLONG) == 8 && sizeof(WCHAR) == 2 && sizeof(bool) == 1);

} // namespace NSTQ
