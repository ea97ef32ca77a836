// Code pages that no program runs under here, but in which old files hold their texts: decoding only.
#pragma once

namespace NSTQ::Platform {

/// The 128 characters of the bytes from 0x80 up in a code page of single bytes (874, 1250, 1251, 1253 to 1258 and
/// 10000), null for another one. Below 0x80 they are ASCII. What a page does not define is the control character of
/// the same number, or U+FFFD where there is none.
const char16_t* FindUpperHalf(unsigned codePage);

} // namespace NSTQ::Platform
