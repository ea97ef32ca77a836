#include "platform/automation/ValueText.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string_view>

namespace NSTQ::Platform {

namespace {

constexpr std::chrono::sys_days dayZero = std::chrono::year(1899) / 12 / 30;
constexpr int firstDay = (std::chrono::sys_days(std::chrono::year(100) / 1 / 1) - dayZero).count();
constexpr int lastDay = (std::chrono::sys_days(std::chrono::year(9999) / 12 / 31) - dayZero).count();
constexpr std::string_view dateLetters = "yMd";
constexpr std::string_view timeLetters = "Hhmst";
constexpr int secondsPerDay = 24 * 60 * 60;

/// The parts of a date and time.
struct SMoment {
    unsigned year;
    unsigned month;
    unsigned day;
    unsigned hour;
    unsigned minute;
    unsigned second;
};

SMoment TakeApart(int day, int seconds) {
    const std::chrono::year_month_day date(dayZero + std::chrono::days(day));
    const auto time = static_cast<unsigned>(seconds);
    return {static_cast<unsigned>(static_cast<int>(date.year())),
            static_cast<unsigned>(date.month()),
            static_cast<unsigned>(date.day()),
            time / 3600,
            time / 60 % 60,
            time % 60};
}

void AppendTwoDigits(CValueText& text, unsigned value) {
    text.Append(static_cast<char>('0' + value / 10));
    text.Append(static_cast<char>('0' + value % 10));
}

/// A run of one of the letters.
void AppendElement(CValueText& text, std::string_view run, const SMoment& moment) {
    const auto append = [&](unsigned value) {
        if (run.size() == 1 && value < 10)
            text.Append(static_cast<char>('0' + value));
        else
            AppendTwoDigits(text, value);
    };
    switch (run[0]) {
    case 'y':
        if (run.size() == 4)
            AppendTwoDigits(text, moment.year / 100);
        return AppendTwoDigits(text, moment.year % 100);
    case 'M':
        return append(moment.month);
    case 'd':
        return append(moment.day);
    case 'H':
        return append(moment.hour);
    case 'h':
        return append((moment.hour + 11) % 12 + 1);
    case 'm':
        return append(moment.minute);
    case 's':
        return append(moment.second);
    default:
        return text.Append(moment.hour < 12 ? "AM" : "PM");
    }
}

/// Every other character is written unchanged.
void AppendPicture(CValueText& text, std::string_view picture, std::string_view letters, const SMoment& moment) {
    for (std::size_t at = 0; at < picture.size();) {
        const std::size_t end = std::min(picture.find_first_not_of(picture[at], at), picture.size());
        const std::string_view run = picture.substr(at, end - at);
        if (letters.find(run[0]) == std::string_view::npos)
            text.Append(run);
        else
            AppendElement(text, run, moment);
        at = end;
    }
}

} // namespace

HRESULT AppendDate(CValueText& text, double date) {
    // NaN fails this, too.
    if (!(date > firstDay - 1 && date < lastDay + 1))
        return E_INVALIDARG;
    const double whole = std::trunc(date);
    const double fraction = std::fabs(date - whole);
    int day = static_cast<int>(whole);
    const bool isTimeAlone = day == 0;
    int seconds = static_cast<int>(std::lround(fraction * secondsPerDay));
    if (seconds == secondsPerDay) {
        seconds = 0;
        ++day;
    }
    if (day > lastDay)
        return E_INVALIDARG;
    const SMoment moment = TakeApart(day, seconds);
    // A value that is rounded to midnight is still a time, and a time without a date does not get one by rounding.
    const bool hasDate = day != 0 && !isTimeAlone;
    if (hasDate)
        AppendPicture(text, GetDateFormat(), dateLetters, moment);
    if (hasDate && fraction != 0)
        text.Append(' ');
    if (!hasDate || fraction != 0)
        AppendPicture(text, GetTimeFormat(), timeLetters, moment);
    return S_OK;
}

} // namespace NSTQ::Platform
