#include "providers/workbook/SCCellValue.h"

#include "platform/automation/ValueText.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>

namespace NSTQ::Providers {

namespace {

constexpr double days1904 = 1462;
constexpr double firstDate = -657434;      ///< 0100-01-01
constexpr double dateEnd = 2958466 - 1e-5; ///< so that rounding to the second stays in 9999
constexpr double firstRealDate1900 = 60;
constexpr int secondsOfDay = 86400;

/// Parses `digits` digits and, if it is not NUL, `separator` after them, and removes them from the text.
bool TakeNumber(std::string_view& text, std::size_t digits, char separator, int& number) {
    if (text.size() < digits + (separator != '\0' ? 1 : 0))
        return false;
    const char* const end = text.data() + digits;
    const auto parsed = std::from_chars(text.data(), end, number);
    if (parsed.ec != std::errc() || parsed.ptr != end || number < 0)
        return false;
    text.remove_prefix(digits);
    if (separator == '\0')
        return true;
    const bool isThere = text.front() == separator;
    text.remove_prefix(1);
    return isThere;
}

std::optional<double> TakeDay(std::string_view& text) {
    int year = 0;
    int month = 0;
    int day = 0;
    if (!TakeNumber(text, 4, '-', year) || !TakeNumber(text, 2, '-', month) || !TakeNumber(text, 2, '\0', day))
        return std::nullopt;
    using namespace std::chrono;
    const year_month_day date(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                              std::chrono::day(static_cast<unsigned>(day)));
    if (!date.ok() || year < 100)
        return std::nullopt;
    return static_cast<double>((sys_days(date) - sys_days(1899y / 12 / 30)).count());
}

/// A time of day as a fraction of it, to the end of the text.
std::optional<double> TakeTime(std::string_view text) {
    int hour = 0;
    int minute = 0;
    int second = 0;
    double fraction = 0;
    if (text.ends_with('Z'))
        text.remove_suffix(1);
    if (!TakeNumber(text, 2, ':', hour) || !TakeNumber(text, 2, '\0', minute))
        return std::nullopt;
    if (text.starts_with(':')) {
        text.remove_prefix(1);
        if (!TakeNumber(text, 2, '\0', second))
            return std::nullopt;
        const auto parsed =
            std::from_chars(text.data(), text.data() + text.size(), fraction, std::chars_format::fixed);
        if (!text.empty() && (text.front() != '.' || parsed.ptr != text.data() + text.size()))
            return std::nullopt;
    } else if (!text.empty()) {
        return std::nullopt;
    }
    if (hour > 23 || minute > 59 || second > 59)
        return std::nullopt;
    return (hour * 3600 + minute * 60 + second + fraction) / secondsOfDay;
}

double SecondsOf(char unit) {
    switch (unit) {
    case 'W':
        return 7.0 * secondsOfDay;
    case 'D':
        return secondsOfDay;
    case 'H':
        return 3600;
    case 'M':
        return 60;
    default:
        return 1;
    }
}

} // namespace

std::optional<double> SCCellValue::ParseNumber(std::string_view text) {
    double number = 0;
    if (text.starts_with('+'))
        text.remove_prefix(1);
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = parsed.ec == std::errc() && parsed.ptr == text.data() + text.size();
    return isWhole && std::isfinite(number) ? std::optional(number) : std::nullopt;
}

std::optional<std::size_t> SCCellValue::ParseIndex(std::string_view text) {
    std::size_t index = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), index);
    const bool isWhole = parsed.ec == std::errc() && parsed.ptr == text.data() + text.size();
    return isWhole ? std::optional(index) : std::nullopt;
}

bool SCCellValue::IsPlainNumber(std::string_view text) {
    constexpr std::size_t maxDigits = 15;
    constexpr std::size_t longestFraction = 4; // of zeros and one other digit
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const bool isNegative = text.starts_with('-');
    text.remove_prefix(isNegative ? 1 : 0);
    if (text.empty() || text.size() > maxDigits + 1)
        return false;
    const auto point = std::find_if_not(text.begin(), text.end(), isDigit);
    const auto whole = static_cast<std::size_t>(point - text.begin());
    if (whole == 0 || (whole > 1 && text[0] == '0'))
        return false;
    if (point == text.end())
        return whole <= maxDigits && !(isNegative && text[0] == '0');
    const std::string_view fraction = text.substr(whole + 1);
    return *point == '.' && Platform::GetDecimalSign() == '.' && !fraction.empty() && fraction.back() != '0' &&
           std::all_of(fraction.begin(), fraction.end(), isDigit) &&
           (text[0] != '0' || fraction.find_first_not_of('0') < longestFraction);
}

std::optional<bool> SCCellValue::ParseBoolean(std::string_view text) {
    const bool isTrue = text == "1" || text == "true";
    return isTrue || text == "0" || text == "false" ? std::optional(isTrue) : std::nullopt;
}

std::optional<double> SCCellValue::ParseIsoDate(std::string_view text) {
    if (text.size() > 2 && text[2] == ':')
        return TakeTime(text);
    const std::optional<double> day = TakeDay(text);
    if (!day || text.empty())
        return day;
    if (text.front() != 'T' && text.front() != ' ')
        return std::nullopt;
    const std::optional<double> time = TakeTime(text.substr(1));
    // Before day 0 the absolute value of the fraction is the time.
    return time ? std::optional(*day < 0 ? *day - *time : *day + *time) : std::nullopt;
}

std::optional<double> SCCellValue::ParseIsoDuration(std::string_view text) {
    const bool isNegative = text.starts_with('-');
    text.remove_prefix(isNegative ? 1 : 0);
    if (!text.starts_with('P'))
        return std::nullopt;
    text.remove_prefix(1);
    double seconds = 0;
    bool hasAny = false;
    bool isOfDay = false;
    std::string_view units = "WD"; // those that may follow, in their order
    while (!text.empty()) {
        if (text.front() == 'T' && !isOfDay) {
            text.remove_prefix(1);
            units = "HMS";
            isOfDay = true;
            hasAny = false;
            continue;
        }
        double count = 0;
        const char* const end = text.data() + text.size();
        const auto parsed = std::from_chars(text.data(), end, count, std::chars_format::fixed);
        if (parsed.ec != std::errc() || parsed.ptr == end || text.front() < '0' || text.front() > '9')
            return std::nullopt;
        const std::size_t unit = units.find(*parsed.ptr);
        if (unit == std::string_view::npos)
            return std::nullopt;
        seconds += count * SecondsOf(*parsed.ptr);
        hasAny = true;
        units.remove_prefix(unit + 1);
        text.remove_prefix(static_cast<std::size_t>(parsed.ptr - text.data()) + 1);
    }
    if (!hasAny)
        return std::nullopt;
    return (isNegative ? -seconds : seconds) / secondsOfDay;
}

std::optional<std::string> SCCellValue::SpanText(double days) {
    constexpr double endOfSpans = 1e10;
    if (!(std::fabs(days) < endOfSpans))
        return std::nullopt;
    const std::int64_t seconds = std::llround(std::fabs(days) * secondsOfDay);
    const auto append = [](std::string& text, std::int64_t number) {
        text += {':', static_cast<char>('0' + number / 10), static_cast<char>('0' + number % 10)};
    };
    std::string text = days < 0 && seconds > 0 ? "-" : "";
    text += std::to_string(seconds / 3600);
    append(text, seconds / 60 % 60);
    append(text, seconds % 60);
    return text;
}

std::optional<double> SCCellValue::DateOfNumber(double number, EDateKind kind, bool isDate1904) {
    double date = number;
    const bool isTimeAlone = kind == EDateKind::Time && number >= 0 && number < 1;
    if (!isTimeAlone && isDate1904)
        date += days1904;
    else if (!isTimeAlone && number >= 1 && number < firstRealDate1900)
        date += 1;
    // The two systems differ in the direction of the fraction of negative dates.
    if (date < 0 && date != std::floor(date))
        date = std::floor(date) - (date - std::floor(date));
    return date >= firstDate && date < dateEnd ? std::optional(date) : std::nullopt;
}

} // namespace NSTQ::Providers
