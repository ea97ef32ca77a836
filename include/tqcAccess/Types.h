// One alias per width: the names and widths of the Windows types that the interface is written in.
//
// Where `long` has 64 bits the aliases keep the 32 bits that records, lengths and error codes have on Windows; where
// it has 32, they are the system's own types. No header of the library includes <windows.h>: a program may include it
// before or after. It must then not make the names of namespace NSTQ visible everywhere with `using namespace NSTQ`,
// because WCHAR and FILETIME differ from the system's.
#pragma once

#include <climits>
#include <cstdint>

namespace NSTQ {

#if LONG_MAX == 0x7FFFFFFF
using DWORD = unsigned long; ///< 32 bits, unsigned
using LONG = long;           ///< 32 bits, signed
#else
using DWORD = std::uint32_t; ///< 32 bits, unsigned
using LONG = std::int32_t;   ///< 32 bits, signed
#endif
using WORD = std::uint16_t; ///< 16 bits, unsigned
/// 64 bits, signed.
#if defined(_WIN32)
using LONGLONG = long long;
#else
using LONGLONG = std::int64_t;
#endif
/// One UTF-16 unit. On Windows too it is not wchar_t, so that literals and strings have one type everywhere.
using WCHAR = char16_t;
/// An open file or search; null means none.
using HANDLE = void*;

/// A time as a 64-bit count of 100-nanosecond steps since 1601-01-01 UTC, in two halves; as the type of Windows.
struct FILETIME {
    DWORD dwLowDateTime;  ///< the lower half
    DWORD dwHighDateTime; ///< the higher half
};

static_assert(sizeof(DWORD) == 4 && sizeof(LONG) == 4 && sizeof(WORD) == 2);
static_assert(sizeof(LONGLONG) == 8 && sizeof(WCHAR) == 2 && sizeof(bool) == 1);

} // namespace NSTQ
