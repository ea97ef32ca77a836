#include "platform/automation/ValueText.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>

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
constexpr int currencyScale = 4;
constexpr int maxDecimalScale = 28;
/// Numbers with this or a smaller exponent are written in exponent form.
constexpr int smallExponent = -5;

std::string_view WithoutTrailingZeros(std::string_view digits) {
    return digits.substr(0, digits.find_last_not_of('0') + 1);
}

/// Writes the number 0.DIGITS times 10 to the power of `point` without an exponent. No digits means 0.
void AppendPlain(CValueText& text, std::string_view digits, int point) {
    const auto whole = point <= 0 ? std::string_view{} : digits.substr(0, static_cast<std::size_t>(point));
    if (whole.empty())
        text.Append('0');
    text.Append(whole);
    for (auto given = static_cast<int>(whole.size()); given < point; ++given)
        text.Append('0');
    const auto fraction = WithoutTrailingZeros(digits.substr(whole.size()));
    if (fraction.empty())
        return;
    text.Append(GetDecimalSign());
    for (int zero = point; zero < 0; ++zero)
        text.Append('0');
    text.Append(fraction);
}

void AppendExponentForm(CValueText& text, std::string_view digits, int exponent) {
    AppendPlain(text, digits, 1);
    text.Append('E');
    text.Append(exponent < 0 ? '-' : '+');
    const int magnitude = std::abs(exponent);
    if (magnitude < 10)
        text.Append('0');
    AppendInteger(text, magnitude);
}

constexpr std::uint64_t PowerOf(std::uint64_t base, int exponent) {
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
    const std::uint64_t first = PowerOf(10, significant);
    if (exponent >= 0) {
        // odd * 2^exponent as digits * 10^exponent
        const std::uint64_t divisor = PowerOf(5, exponent);
        const std::uint64_t digits = odd / divisor;
        return odd % divisor == 0 && digits % 10 == 5 && digits >= first && digits < first * 10;
    }
    const std::uint64_t factor = PowerOf(5, -exponent);
    return odd >= (first + factor - 1) / factor && odd <= (first * 10 - 1) / factor;
}

template <class TFloat>
std::to_chars_result WriteScientific(char (&room)[32], TFloat value, SDigits digits) {
    if (digits.isShortest)
        return std::to_chars(room, std::end(room), value, std::chars_format::scientific);
    // to_chars rounds a tie to the even digit, Windows away from zero: like any number just above the tie.
    if (IsTie(value, digits.count))
        value = std::nextafter(value, std::numeric_limits<TFloat>::infinity());
    return std::to_chars(room, std::end(room), value, std::chars_format::scientific, digits.count - 1);
}

/// `value` is positive and finite. The digits are rounded first, so that 999999999999999.9 is 1E+15.
template <class TFloat>
void AppendRounded(CValueText& text, TFloat value, SDigits digits) {
    char scientific[32];
    const std::string_view written(
        scientific, static_cast<std::size_t>(WriteScientific(scientific, value, digits).ptr - scientific));
    const std::size_t mark = written.find('e');
    // D.DDDDe+XX: moving the first digit over the point makes the digits one run.
    const std::size_t first = mark > 1 ? 1 : 0;
    scientific[first] = scientific[0];
    const std::string_view run = written.substr(first, mark - first);
    const std::size_t exponentBegin = mark + (written[mark + 1] == '+' ? 2 : 1);
    int exponent = 0;
    std::from_chars(written.data() + exponentBegin, written.data() + written.size(), exponent);
    if (exponent >= digits.count || exponent <= smallExponent)
        AppendExponentForm(text, WithoutTrailingZeros(run), exponent);
    else
        AppendPlain(text, run, exponent + 1);
}

/// Writes `units` divided by 10 to the power of `scale`.
void AppendScaled(CValueText& text, std::uint64_t units, int scale) {
    char buffer[24];
    const auto end = std::to_chars(buffer, std::end(buffer), units).ptr;
    const std::string_view digits(buffer, static_cast<std::size_t>(end - buffer));
    AppendPlain(text, digits == "0" ? std::string_view{} : digits, static_cast<int>(digits.size()) - scale);
}

/// Integers and short decimals, which are the most frequent. If a decimal of at most 15 digits converts to exactly
/// this double, rounding to 15 digits would find it. `value` is not negative.
bool AppendShort(CValueText& text, double value) {
    constexpr struct {
        double power;
        int scale;
    } steps[] = {{1e4, 4}, {1e9, 9}};
    constexpr double limit = 1e15;
    constexpr double smallest = 1e-4;
    if (value >= limit)
        return false;
    const auto whole = static_cast<std::uint64_t>(value);
    if (static_cast<double>(whole) == value) {
        AppendUnsigned(text, whole);
        return true;
    }
    for (const auto& step : steps) {
        if (value < smallest || value >= limit / step.power)
            return false;
        const auto units = static_cast<std::uint64_t>(std::llround(value * step.power));
        if (static_cast<double>(units) / step.power == value) {
            AppendScaled(text, units, step.scale);
            return true;
        }
    }
    return false;
}

template <class TFloat>
void AppendNumber(CValueText& text, TFloat value, SDigits digits) {
    constexpr bool isDouble = std::is_same_v<TFloat, double>;
    if (std::isnan(value)) {
        text.Append(std::signbit(value) ? "-1.#IND" : "1.#QNAN");
        return;
    }
    if (value < 0)
        text.Append('-');
    const TFloat magnitude = std::fabs(value);
    if (std::isinf(magnitude))
        text.Append("1.#INF");
    else if (!isDouble && magnitude == 0)
        text.Append('0');
    else if (!isDouble || !AppendShort(text, magnitude))
        AppendRounded(text, magnitude, digits);
}

} // namespace

void AppendInteger(CValueText& text, std::int64_t value) {
    char buffer[24];
    const auto end = std::to_chars(buffer, std::end(buffer), value).ptr;
    text.Append(std::string_view(buffer, static_cast<std::size_t>(end - buffer)));
}

void AppendUnsigned(CValueText& text, std::uint64_t value) {
    char buffer[24];
    const auto end = std::to_chars(buffer, std::end(buffer), value).ptr;
    text.Append(std::string_view(buffer, static_cast<std::size_t>(end - buffer)));
}

void AppendDouble(CValueText& text, double value) {
    AppendNumber(text, value, IsFullNumber() ? fullDoubleDigits : doubleDigits);
}

void AppendFloat(CValueText& text, float value) {
    AppendNumber(text, value, IsFullNumber() ? fullFloatDigits : floatDigits);
}

void AppendCurrency(CValueText& text, std::int64_t value) {
    auto units = static_cast<std::uint64_t>(value);
    if (value < 0) {
        text.Append('-');
        units = 0 - units;
    }
    AppendScaled(text, units, currencyScale);
}

HRESULT AppendDecimal(CValueText& text, const DECIMAL& value) {
    if (value.scale > maxDecimalScale)
        return E_INVALIDARG;
    // Division by ten, 32 bits at a time, returns the digits from the last one.
    DWORD parts[] = {value.Hi32, static_cast<DWORD>(value.Lo64 >> 32), static_cast<DWORD>(value.Lo64)};
    char buffer[32];
    char* first = std::end(buffer);
    while ((parts[0] | parts[1] | parts[2]) != 0) {
        std::uint64_t rest = 0;
        for (DWORD& part : parts) {
            const std::uint64_t dividend = rest << 32 | part;
            part = static_cast<DWORD>(dividend / 10);
            rest = dividend % 10;
        }
        *--first = static_cast<char>('0' + rest);
    }
    const std::string_view digits(first, static_cast<std::size_t>(std::end(buffer) - first));
    if (value.sign != 0 && !digits.empty())
        text.Append('-');
    AppendPlain(text, digits, static_cast<int>(digits.size()) - value.scale);
    return S_OK;
}

} // namespace NSTQ::Platform
