// The user's locale: how values of workbooks and databases are written as text.
//
// On Linux it is a setting of this layer and not of the environment: the library never calls setlocale. A host sets
// it once, before it uses anything else of the library, from one thread; afterwards any thread may use it.
#pragma once

#include "Export.h"

#include <cstddef>
#include <string_view>

namespace NSTQ::Platform {

/// Format patterns are ASCII, not empty, and have at most this many characters; so do the other texts, which may be
/// empty.
inline constexpr std::size_t maxLocalePicture = 31;

/// How many digits of a floating-point number are written.
enum class ENumberDigits : unsigned char {
    Default, ///< at most 15, for a Single 7: rounded, ties away from zero, as on Windows
    Full,    ///< as many as are needed to read the same number back: at most 17, for a Single 9
};

/// How bytes are written.
enum class EBytesForm : unsigned char {
    Hex,    ///< 0x and two digits for each
    Base64, ///< in groups of four characters, padded with '='
    Empty,  ///< as an empty text
};

/// How dates, times, numbers and other values are written. The texts belong to the caller.
struct SUserLocale {
    /// yyyy, yy: the year with four or two digits; MM, M: the month, dd, d: the day, with two digits or without a
    /// leading zero. Every other character is written unchanged; a single y and longer runs are rejected.
    std::string_view dateFormat = "yyyy/MM/dd";
    /// HH, H: the hour from 0 to 23; hh, h: from 1 to 12; mm, m: the minute; ss, s: the second; tt: AM or PM.
    std::string_view timeFormat = "H:mm:ss";
    /// A printable ASCII character other than a space, a digit, a letter, '-', '+' and '#'.
    char decimalSign = '.';
    /// Also the number of digits before the decimal sign from which the exponent form is used, for Full 17 or 9.
    ENumberDigits numberDigits = ENumberDigits::Default;
    std::string_view trueText = "-1"; ///< printable ASCII
    std::string_view falseText = "0"; ///< the same
    /// Of a missing value, in the rows that CADOOperater and what uses it return. A reader takes it when it is
    /// constructed.
    std::string_view nullText = "";
    EBytesForm bytesForm = EBytesForm::Hex; ///< of binary values
};

/// Copies it. False, with the setting unchanged, when a part of it is not as above.
TQCACCESS_API bool SetUserLocale(const SUserLocale& locale);

/// The most bytes of a date, see FormatDate.
inline constexpr std::size_t maxDateText = 128;

/// A date in these formats: the date alone, the time alone on day 0, or both with a space between them. `date` is in
/// days since 1899-12-30, where the absolute value of the fraction is the time. Writes at most maxDateText bytes to
/// `text`, without a NUL, and returns how many; 0 for one outside the years 100 to 9999.
TQCACCESS_API std::size_t FormatDate(double date, char* text);

/// The setting, valid until the next SetUserLocale.
TQCACCESS_API SUserLocale GetUserLocale();

} // namespace NSTQ::Platform
