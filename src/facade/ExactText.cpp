#include "ExactText.h"

#include <chrono>
#include <cmath>
#include <cstring>

namespace NSTQ::NSTQCore {

using namespace NSTQ::Platform;

namespace {

__extension__ using TUint128 = unsigned __int128;

constexpr unsigned currencyScale = 4;

/// DIGITS divided by 10 to the power of `scale`, which is at most 28.
template <class TDigits>
char* WriteScaled(TDigits digits, unsigned scale, bool isNegative, char* out) {
    while (scale > 0 && digits % 10 == 0) {
        digits /= 10;
        --scale;
    }
    char room[maxExactText];
    char* const end = room + sizeof room;
    char* first = end;
    for (unsigned written = 0; digits != 0 || written <= scale; ++written, digits /= 10) {
        if (written == scale && scale > 0)
            *--first = '.';
        *--first = static_cast<char>('0' + static_cast<int>(digits % 10));
    }
    if (isNegative)
        *--first = '-';
    const auto size = static_cast<std::size_t>(end - first);
    std::memcpy(out, first, size);
    return out + size;
}

char* WriteDigits(unsigned value, int count, char* out) {
    for (int at = count - 1; at >= 0; --at, value /= 10)
        out[at] = static_cast<char>('0' + value % 10);
    return out + count;
}

char* WriteDay(int day, char* out) {
    constexpr std::chrono::sys_days dayZero = std::chrono::year(1899) / 12 / 30;
    const std::chrono::year_month_day date(dayZero + std::chrono::days(day));
    out = WriteDigits(static_cast<unsigned>(static_cast<int>(date.year())), 4, out);
    *out++ = '-';
    out = WriteDigits(static_cast<unsigned>(date.month()), 2, out);
    *out++ = '-';
    return WriteDigits(static_cast<unsigned>(date.day()), 2, out);
}

char* WriteTime(unsigned milliseconds, char* out) {
    const unsigned seconds = milliseconds / 1000;
    out = WriteDigits(seconds / 3600, 2, out);
    *out++ = ':';
    out = WriteDigits(seconds / 60 % 60, 2, out);
    *out++ = ':';
    out = WriteDigits(seconds % 60, 2, out);
    if (milliseconds % 1000 == 0)
        return out;
    *out++ = '.';
    return WriteDigits(milliseconds % 1000, 3, out);
}

} // namespace

char* WriteDecimal(const DECIMAL& value, char* out) {
    constexpr unsigned maxScale = 28;
    if (value.scale > maxScale)
        return nullptr;
    const bool isNegative = value.sign != 0 && (value.Hi32 | value.Lo64) != 0;
    if (value.Hi32 == 0)
        return WriteScaled(value.Lo64, value.scale, isNegative, out);
    return WriteScaled(TUint128{value.Hi32} << 64 | value.Lo64, value.scale, isNegative, out);
}

char* WriteCurrency(std::int64_t value, char* out) {
    const auto units = static_cast<std::uint64_t>(value);
    return WriteScaled(value < 0 ? 0 - units : units, currencyScale, value < 0, out);
}

char* WriteIsoDate(double date, char* out) {
    constexpr int firstDay = -657434;
    constexpr int lastDay = 2958465;
    constexpr long millisecondsPerDay = 86400000;
    // NaN fails this, too.
    if (!(date > firstDay - 1 && date < lastDay + 1))
        return nullptr;
    const double whole = std::trunc(date);
    const double fraction = std::fabs(date - whole);
    int day = static_cast<int>(whole);
    const bool isTimeAlone = day == 0;
    long time = std::lround(fraction * static_cast<double>(millisecondsPerDay));
    if (time == millisecondsPerDay && day < lastDay) {
        time = 0;
        ++day;
    } else if (time == millisecondsPerDay) {
        --time;
    }
    const bool hasDate = day != 0 && !isTimeAlone;
    if (hasDate)
        out = WriteDay(day, out);
    if (hasDate && fraction != 0)
        *out++ = 'T';
    return hasDate && fraction == 0 ? out : WriteTime(static_cast<unsigned>(time), out);
}

} // namespace NSTQ::NSTQCore
