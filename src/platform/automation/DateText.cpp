#include "platform/automation/Decimals.h"
#include "platform/automation/ValueText.h"

#include <array>
#include <chrono>
#include <cmath>

namespace NSTQ::Platform {

namespace {

constexpr std::chrono::sys_days dayZero = std::chrono::year(1899) / 12 / 30;
constexpr int firstDay = (std::chrono::sys_days(std::chrono::year(100) / 1 / 1) - dayZero).count();
constexpr int lastDay = (std::chrono::sys_days(std::chrono::year(9999) / 12 / 31) - dayZero).count();
constexpr unsigned secondsPerDay = 24 * 60 * 60;

/// The parts of a date and time, by SPictureStep::EPart; each is below 100.
using SMoment = std::array<unsigned, SPictureStep::Literal>;

void TakeDateApart(int day, SMoment& moment) {
    const std::chrono::year_month_day date(dayZero + std::chrono::days(day));
    const auto year = static_cast<unsigned>(static_cast<int>(date.year()));
    moment[SPictureStep::Century] = year / 100;
    moment[SPictureStep::Year] = year % 100;
    moment[SPictureStep::Month] = static_cast<unsigned>(date.month());
    moment[SPictureStep::Day] = static_cast<unsigned>(date.day());
}

void TakeTimeApart(unsigned seconds, SMoment& moment) {
    const unsigned hour = seconds / 3600;
    moment[SPictureStep::Hour] = hour;
    moment[SPictureStep::Hour12] = (hour + 11) % 12 + 1;
    moment[SPictureStep::Minute] = seconds / 60 % 60;
    moment[SPictureStep::Second] = seconds % 60;
    moment[SPictureStep::HalfDay] = hour < 12 ? 0 : 1;
}

char* PutPicture(char* to, std::span<const SPictureStep> steps, const SMoment& moment) {
    for (const SPictureStep step : steps) {
        if (step.part == SPictureStep::Literal) {
            *to++ = step.literal;
        } else if (const unsigned value = moment[step.part]; step.part == SPictureStep::HalfDay) {
            *to++ = value == 0 ? 'A' : 'P';
            *to++ = 'M';
        } else if (step.isShort && value < 10) {
            *to++ = static_cast<char>('0' + value);
        } else {
            to = PutTwoDigits(to, value);
        }
    }
    return to;
}

} // namespace

char* PutDate(char* to, double date) {
    // NaN fails this, too.
    if (!(date > firstDay - 1 && date < lastDay + 1))
        return nullptr;
    int day = static_cast<int>(date);
    const double fraction = std::fabs(date - day);
    const bool isTimeAlone = day == 0;
    auto seconds = static_cast<unsigned>(RoundToInteger(fraction * secondsPerDay));
    if (seconds == secondsPerDay) {
        seconds = 0;
        ++day;
    }
    if (day > lastDay)
        return nullptr;
    SMoment moment{};
    // A value that is rounded to midnight is still a time, and a time without a date does not get one by rounding.
    const bool hasDate = day != 0 && !isTimeAlone;
    if (hasDate) {
        TakeDateApart(day, moment);
        to = PutPicture(to, GetDateSteps(), moment);
        if (fraction == 0)
            return to;
        *to++ = ' ';
    }
    TakeTimeApart(seconds, moment);
    return PutPicture(to, GetTimeSteps(), moment);
}

} // namespace NSTQ::Platform
