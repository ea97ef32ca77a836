#include "providers/workbook/SCCellValue.h"

#include <charconv>
#include <chrono>
#include <cmath>

namespace NSTQ::Providers {

namespace {

constexpr double days1904 = 1462;
constexpr double firstDate = -657434;      ///< 0100-01-01
constexpr double dateEnd = 2958466 - 1e-5; ///< so that rounding to the second stays in 9999
constexpr double firstRealDate1900 = 60;
constexpr int secondsOfDay = 86400;

/// Takes `digits` digits and, when it is not NUL, `separator` behind them off the text.
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

} // namespace

std::optional<double> SCCellValue::ParseNumber(std::string_view text) {
    double number = 0;
    if (text.starts_with('+'))
        text.remove_prefix(1);
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isWhole = parsed.ec == std::errc() && parsed.ptr == text.data() + text.size();
    return isWhole && std::isfinite(number) ? std::optional(number) : std::nullopt;
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
    // The fraction of a day before day 0 counts away from it.
    return time ? std::optional(*day < 0 ? *day - *time : *day + *time) : std::nullopt;
}

std::optional<double> SCCellValue::DateOfNumber(double number, EDateKind kind, bool isDate1904) {
    double date = number;
    const bool isTimeAlone = kind == EDateKind::Elapsed || (kind == EDateKind::Time && number >= 0 && number < 1);
    if (!isTimeAlone && isDate1904)
        date += days1904;
    else if (!isTimeAlone && number >= 1 && number < firstRealDate1900)
        date += 1;
    // Between the two systems of negative dates lies a fraction that counts the other way.
    if (date < 0 && date != std::floor(date) && kind != EDateKind::Elapsed)
        date = std::floor(date) - (date - std::floor(date));
    return date >= firstDate && date < dateEnd ? std::optional(date) : std::nullopt;
}

} // namespace NSTQ::Providers
