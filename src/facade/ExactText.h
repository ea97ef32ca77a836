// Values as texts that lose nothing and that no locale changes.
#pragma once

#include "platform/automation/Variant.h"

#include <cstddef>
#include <cstdint>

namespace NSTQ::NSTQCore {

/// What each of these writes at most, in bytes; none adds a NUL.
inline constexpr std::size_t maxExactText = 48;

/// All digits, without trailing zeros of the fraction, with '.' as the decimal sign: -12.5. Returns the end; null
/// for a scale above 28.
char* WriteDecimal(const Platform::DECIMAL& value, char* out);
/// The same for ten-thousandths.
char* WriteCurrency(std::int64_t value, char* out);

/// A date as ISO 8601 writes it, rounded to the millisecond: 2024-05-06 when it has no time, 2024-05-06T07:08:09 or
/// 2024-05-06T07:08:09.120, and the time alone on day 0. Returns the end; null for one that is not in the years 100
/// to 9999.
char* WriteIsoDate(double date, char* out);

} // namespace NSTQ::NSTQCore
