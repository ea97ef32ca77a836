// Code pages of texts in old files that cannot be set as the ANSI code page: decoding only.
#pragma once

namespace NSTQ::Platform {

/// The 128 characters of the bytes from 0x80 up in a code page of single bytes (874, 1250, 1251, 1253 to 1258 and
/// 10000), null for any other. Below 0x80 they are ASCII. A byte that a page does not define gives the control
/// character of the same number, or U+FFFD if there is none.
const char16_t* FindUpperHalf(unsigned codePage);

} // namespace NSTQ::Platform
