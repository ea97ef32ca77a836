// Conversion of the system's values to those of this library.
#pragma once

#include "platform/windows/ado/SystemOle.h"

#include <span>

namespace NSTQ::Platform {

/// Whether it is an array of bytes.
bool IsBytes(const ::VARIANT& value);

/// The bytes of such an array; valid as long as it.
std::span<const unsigned char> GetBytes(const ::VARIANT& value);

/// Converts a value that is no array of bytes. A text is copied to `text`, whose memory is reused, and is not owned
/// by `target`. Throws DISP_E_TYPEMISMATCH for objects, other arrays and unknown types, E_OUTOFMEMORY.
void ConvertValue(const ::VARIANT& value, VARIANT& target, CBstr& text);

} // namespace NSTQ::Platform
