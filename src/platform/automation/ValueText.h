// Texts of values, which are ASCII: the parts of VariantChangeType, for callers that want bytes.
//
// Each function writes to a buffer with room for maxValueText bytes, adds no NUL and returns the end of the text.
#pragma once

#include "platform/automation/Variant.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace NSTQ::Platform {

/// Suffices for every value: a number needs at most 31 bytes, and a date in two format patterns of at most 31
/// characters, each of which gives at most two, needs 125.
inline constexpr std::size_t maxValueText = 128;

/// One step in writing a date or time: a literal character, or a part of it.
struct SPictureStep {
    enum EPart : unsigned char { Century, Year, Month, Day, Hour, Hour12, Minute, Second, HalfDay, Literal };

    EPart part;
    bool isShort; ///< one digit below 10
    char literal;
};

// Parts of the user locale that every value needs.
char GetDecimalSign();
bool IsFullNumber();
std::string_view GetBooleanText(bool value);
std::span<const SPictureStep> GetDateSteps();
std::span<const SPictureStep> GetTimeSteps();

char* PutInteger(char* to, std::int64_t value);
char* PutUnsigned(char* to, std::uint64_t value);
char* PutDouble(char* to, double value);
char* PutFloat(char* to, float value);
/// `value` is the number times 10000.
char* PutCurrency(char* to, std::int64_t value);
/// Null for a scale above 28.
char* PutDecimal(char* to, const DECIMAL& value);
/// Null for a date outside the years 100 to 9999.
char* PutDate(char* to, double date);

/// The text of any value as VariantChangeType returns it; null where that fails, and for VT_BSTR.
char* PutValue(char* to, const VARIANT& value);

} // namespace NSTQ::Platform
