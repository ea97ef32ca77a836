#include "platform/automation/Decimals.h"
#include "platform/automation/ValueText.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <limits>

namespace NSTQ::Platform {

namespace {

/// The maximum of digits; to_chars finds fewer if `isShortest`.
struct SDigits {
    int count;
    bool isShortest;
};
constexpr SDigits doubleDigits = {15, false};
constexpr SDigits floatDigits = {7, false};
constexpr SDigits fullDoubleDigits = {std::numeric_limits<double>::max_digits10, true};
constexpr SDigits fullFloatDigits = {std::numeric_limits<float>::max_digits10, true};
constexpr unsigned currencyScale = 4;
/// Numbers from these on have more digits before the decimal sign than are written.
constexpr double shortDouble = 1e15;
constexpr double shortFloat = 1e7;
constexpr int maxDecimalScale = 28;
/// Numbers with this or a smaller exponent are written in exponent form.
constexpr int smallExponent = -5;

std::string_view WithoutTrailingZeros(std::string_view digits) {
    return digits.substr(0, digits.find_last_not_of('0') + 1);
}

char* PutZeros(char* to, int count) {
    for (; count > 0; --count)
        *to++ = '0';
    return to;
}

/// Writes the number 0.DIGITS times 10 to the power of `point` without an exponent. No digits means 0.
char* PutPlain(char* to, std::string_view digits, int point) {
    const auto whole = point <= 0 ? std::string_view{} : digits.substr(0, static_cast<std::size_t>(point));
    if (whole.empty())
        *to++ = '0';
    to = PutZeros(PutText(to, whole), point - static_cast<int>(whole.size()));
    const auto fraction = WithoutTrailingZeros(digits.substr(whole.size()));
    if (fraction.empty())
        return to;
    *to++ = GetDecimalSign();
    return PutText(PutZeros(to, -point), fraction);
}

char* PutExponentForm(char* to, std::string_view digits, int exponent) {
    to = PutPlain(to, digits, 1);
    *to++ = 'E';
    *to++ = exponent < 0 ? '-' : '+';
    const int magnitude = std::abs(exponent);
    return magnitude < 100 ? PutTwoDigits(to, static_cast<unsigned>(magnitude)) : PutInteger(to, magnitude);
}

constexpr std::uint64_t PowerOf(std::uint64_t base, unsigned exponent) {
    return exponent == 0 ? 1 : base * PowerOf(base, exponent - 1);
}

/// Whether `value`, which is positive and finite, is exactly between two texts of that many digits: then it has one
/// more digit, a 5. Such a number has few binary digits, so the lowest bit alone excludes nearly all others.
template <class TFloat>
bool IsTie(TFloat value, int significant) {
    constexpr int mantissaBits = std::numeric_limits<TFloat>::digits;
    constexpr int maxFractionBits = 22; // 5 to a higher power leaves no room for 53 bits in 16 digits
    int exponent = 0;
    auto odd = static_cast<std::uint64_t>(std::ldexp(std::frexp(value, &exponent), mantissaBits));
    const int zeros = std::countr_zero(odd);
    odd >>= zeros;
    exponent += zeros - mantissaBits; // value is odd * 2^exponent
    if (exponent > 1 || exponent < -maxFractionBits)
        return false;
    const std::uint64_t first = PowerOf(10, static_cast<unsigned>(significant));
    if (exponent >= 0) {
        // odd * 2^exponent as digits * 10^exponent
        const std::uint64_t divisor = PowerOf(5, static_cast<unsigned>(exponent));
        const std::uint64_t digits = odd / divisor;
        return odd % divisor == 0 && digits % 10 == 5 && digits >= first && digits < first * 10;
    }
    const std::uint64_t factor = PowerOf(5, static_cast<unsigned>(-exponent));
    return odd >= (first + factor - 1) / factor && odd <= (first * 10 - 1) / factor;
}

/// A number as 0.DIGITS times 10 to the power of exponent + 1.
class CScientific {
public:
    template <class TFloat, class... TPrecision>
    explicit CScientific(TFloat value, TPrecision... precision) {
        const auto end =
            std::to_chars(m_room, std::end(m_room), value, std::chars_format::scientific, precision...).ptr;
        const std::string_view written(m_room, static_cast<std::size_t>(end - m_room));
        const std::size_t mark = written.find('e');
        // D.DDDDe+XX: moving the first digit over the point makes the digits one run.
        const std::size_t first = mark > 1 ? 1 : 0;
        m_room[first] = m_room[0];
        m_digits = m_room + first;
        m_count = mark - first;
        const std::size_t exponentBegin = mark + (written[mark + 1] == '+' ? 2 : 1);
        std::from_chars(m_room + exponentBegin, end, m_exponent);
    }
    CScientific(const CScientific&) = delete;
    CScientific& operator=(const CScientific&) = delete;

    std::string_view GetDigits() const { return {m_digits, m_count}; }
    int GetExponent() const { return m_exponent; }

    /// Rounds the shortest digits, which are more than `count`, unless their error, at most half a unit of the last
    /// one, leaves it open on which side the number lies.
    bool Round(std::size_t count) {
        const std::string_view surplus = GetDigits().substr(count);
        const int order = surplus.compare(std::string_view("50000000000").substr(0, surplus.size()));
        if (order == 0)
            return false;
        m_count = count;
        if (order > 0)
            Increment();
        return true;
    }

private:
    void Increment() {
        std::size_t at = m_count;
        while (at > 0 && m_digits[at - 1] == '9')
            m_digits[--at] = '0';
        if (at > 0) {
            ++m_digits[at - 1];
        } else {
            m_digits[0] = '1';
            ++m_exponent;
        }
    }

    char m_room[32];
    char* m_digits;
    std::size_t m_count;
    int m_exponent = 0;
};

char* PutScientific(char* to, const CScientific& number, int maxDigits) {
    const int exponent = number.GetExponent();
    if (exponent >= maxDigits || exponent <= smallExponent)
        return PutExponentForm(to, WithoutTrailingZeros(number.GetDigits()), exponent);
    return PutPlain(to, number.GetDigits(), exponent + 1);
}

/// The plain way to round. `value` is positive and finite. The digits are rounded before the form is chosen, so that
/// 999999999999999.9 is 1E+15.
template <class TFloat>
char* PutRounded(char* to, TFloat value, int digits) {
    // to_chars rounds a tie to the even digit, Windows away from zero: like any number just above the tie.
    if (IsTie(value, digits))
        value = std::nextafter(value, std::numeric_limits<TFloat>::infinity());
    return PutScientific(to, CScientific(value, digits - 1), digits);
}

/// Rounds by way of the shortest digits that give the number as a double, which are found in a third of the time.
/// When they are at most `digits`, which are at most 15, they are the rounded ones: decimals of so many digits are
/// farther apart than doubles.
template <class TFloat>
char* PutByShortest(char* to, TFloat value, int digits) {
    const double number = value;
    if (number >= std::numeric_limits<double>::min()) {
        CScientific shortest(number);
        const auto count = static_cast<std::size_t>(digits);
        if (shortest.GetDigits().size() <= count || shortest.Round(count))
            return PutScientific(to, shortest, digits);
    }
    return PutRounded(to, value, digits);
}

/// Writes `units` divided by 10 to the power of `scale`.
template <unsigned scale>
char* PutScaled(char* to, std::uint64_t units) {
    constexpr std::uint64_t power = PowerOf(10, scale);
    constexpr unsigned isOdd = scale % 2;
    to = PutUnsigned(to, units / power);
    std::uint64_t rest = units % power * (isOdd ? 10 : 1);
    if (rest == 0)
        return to;
    *to++ = GetDecimalSign();
    for (std::uint64_t part = PowerOf(10, scale + isOdd - 2); rest != 0; part /= 100) {
        to = PutTwoDigits(to, static_cast<unsigned>(rest / part));
        rest %= part;
    }
    return to[-1] == '0' ? to - 1 : to;
}

/// Integers and short decimals, which are the most frequent. If a decimal of at most so many digits as `limit` has
/// zeros converts to exactly this double, rounding to that many digits would find it. `value` is not negative. Null
/// when it is none of them.
char* PutShort(char* to, double value, double limit) {
    constexpr double smallest = 1e-4;
    if (value >= limit)
        return nullptr;
    const auto whole = static_cast<std::int64_t>(value);
    if (static_cast<double>(whole) == value)
        return PutUnsigned(to, static_cast<std::uint64_t>(whole));
    if (value < smallest)
        return nullptr;
    const auto isDecimal = [value, limit](double power, std::int64_t& units) {
        if (value >= limit / power)
            return false;
        units = RoundToInteger(value * power);
        return static_cast<double>(units) / power == value;
    };
    std::int64_t units = 0;
    if (isDecimal(1e4, units))
        return PutScaled<4>(to, static_cast<std::uint64_t>(units));
    if (isDecimal(1e9, units))
        return PutScaled<9>(to, static_cast<std::uint64_t>(units));
    return nullptr;
}

template <class TFloat>
char* PutNumber(char* to, TFloat value, SDigits digits, double limit) {
    if (std::isnan(value))
        return PutText(to, std::signbit(value) ? "-1.#IND" : "1.#QNAN");
    if (value < 0)
        *to++ = '-';
    const TFloat magnitude = std::fabs(value);
    if (std::isinf(magnitude))
        return PutText(to, "1.#INF");
    char* const end = PutShort(to, magnitude, limit);
    if (end != nullptr)
        return end;
    return digits.isShortest ? PutScientific(to, CScientific(magnitude), digits.count)
                             : PutByShortest(to, magnitude, digits.count);
}

template <class TInteger>
char* PutDigits(char* to, TInteger value) {
    return std::to_chars(to, to + maxValueText, value).ptr;
}

} // namespace

char* PutInteger(char* to, std::int64_t value) {
    return PutDigits(to, value);
}

char* PutUnsigned(char* to, std::uint64_t value) {
    return PutDigits(to, value);
}

char* PutDouble(char* to, double value) {
    return PutNumber(to, value, IsFullNumber() ? fullDoubleDigits : doubleDigits, shortDouble);
}

char* PutFloat(char* to, float value) {
    return IsFullNumber() ? PutNumber(to, value, fullFloatDigits, 0) : PutNumber(to, value, floatDigits, shortFloat);
}

char* PutCurrency(char* to, std::int64_t value) {
    auto units = static_cast<std::uint64_t>(value);
    if (value < 0) {
        *to++ = '-';
        units = 0 - units;
    }
    return PutScaled<currencyScale>(to, units);
}

char* PutDecimal(char* to, const DECIMAL& value) {
    if (value.scale > maxDecimalScale)
        return nullptr;
    char buffer[32];
    char* first = std::end(buffer);
    DWORD parts[] = {value.Hi32, static_cast<DWORD>(value.Lo64 >> 32), static_cast<DWORD>(value.Lo64)};
    // Division by ten, 32 bits at a time, returns the digits from the last one.
    while (parts[0] != 0) {
        std::uint64_t rest = 0;
        for (DWORD& part : parts) {
            const std::uint64_t dividend = rest << 32 | part;
            part = static_cast<DWORD>(dividend / 10);
            rest = dividend % 10;
        }
        *--first = static_cast<char>('0' + rest);
    }
    for (auto rest = std::uint64_t{parts[1]} << 32 | parts[2]; rest != 0; rest /= 10)
        *--first = static_cast<char>('0' + rest % 10);
    const std::string_view digits(first, static_cast<std::size_t>(std::end(buffer) - first));
    if (value.sign != 0 && !digits.empty())
        *to++ = '-';
    return PutPlain(to, digits, static_cast<int>(digits.size()) - value.scale);
}

} // namespace NSTQ::Platform
