#include "providers/access/CQueryTokens.h"

#include "platform/codepage/AsciiCase.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>

namespace NSTQ::Providers {

namespace {

constexpr double secondsPerDay = 86400;
constexpr std::array<std::u16string_view, 12> keywords = {u"AND",     u"OR",   u"NOT",   u"IS",  u"NULL", u"LIKE",
                                                          u"BETWEEN", u"TRUE", u"FALSE", u"YES", u"NO",   u"IN"};
constexpr std::array<std::u16string_view, 3> longSigns = {u"<>", u"<=", u">="};
constexpr std::u16string_view shortSigns = u"=<>().*-";

bool IsDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
}

bool IsWordUnit(char16_t unit) {
    const char16_t small = Platform::ToAsciiLower(unit);
    return unit >= 0x80 || unit == u'_' || (small >= u'a' && small <= u'z') || IsDigit(unit);
}

/// Numbers and the separators between them, as in dates and times.
class CDateText {
public:
    explicit CDateText(std::u16string_view text) : m_rest(text) {}

    bool IsAtEnd() {
        SkipBlanks();
        return m_rest.empty();
    }
    bool Take(char16_t sign) {
        if (m_rest.empty() || m_rest.front() != sign)
            return false;
        m_rest.remove_prefix(1);
        return true;
    }
    bool TakeWord(std::u16string_view word) {
        SkipBlanks();
        if (!Platform::IsEqualIgnoringCase(m_rest.substr(0, word.size()), word))
            return false;
        m_rest.remove_prefix(word.size());
        return true;
    }
    /// A number of one to four digits; -1 when there is none.
    int TakeNumber() {
        SkipBlanks();
        int number = 0;
        std::size_t digits = 0;
        for (; digits < m_rest.size() && digits < 4 && IsDigit(m_rest[digits]); ++digits)
            number = number * 10 + (m_rest[digits] - u'0');
        m_rest.remove_prefix(digits);
        return digits == 0 ? -1 : number;
    }

private:
    void SkipBlanks() { m_rest.remove_prefix(std::min(m_rest.find_first_not_of(u' '), m_rest.size())); }

    std::u16string_view m_rest;
};

/// Month, day and year with slashes, or year, month and day with hyphens.
std::optional<double> ReadDay(CDateText& text, int first, char16_t sign) {
    const int second = text.TakeNumber();
    if (!text.Take(sign))
        return std::nullopt;
    const int third = text.TakeNumber();
    const bool yearFirst = sign == u'-';
    const int year = yearFirst ? first : third;
    const int month = yearFirst ? second : first;
    const int day = yearFirst ? third : second;
    if (year < 100 || month < 1 || day < 1)
        return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day))};
    if (!date.ok())
        return std::nullopt;
    using namespace std::chrono_literals;
    return static_cast<double>((std::chrono::sys_days(date) - std::chrono::sys_days(1899y / 12 / 30)).count());
}

std::optional<double> ReadTime(CDateText& text, int hour) {
    const int minute = text.TakeNumber();
    const int second = text.Take(u':') ? text.TakeNumber() : 0;
    const bool isAfternoon = text.TakeWord(u"PM");
    const bool hasHalf = isAfternoon || text.TakeWord(u"AM");
    if (hour < 0 || hour > (hasHalf ? 12 : 23) || minute < 0 || minute > 59 || second < 0 || second > 59)
        return std::nullopt;
    if (hasHalf)
        hour = hour % 12 + (isAfternoon ? 12 : 0);
    return (hour * 60 + minute) * 60 + second;
}

/// The seconds of a date, a time or both.
std::optional<double> ReadDate(std::u16string_view literal) {
    CDateText text(literal);
    double seconds = 0;
    int first = text.TakeNumber();
    const char16_t sign = text.Take(u'/') ? u'/' : text.Take(u'-') ? u'-' : u'\0';
    if (sign != u'\0') {
        const auto day = ReadDay(text, first, sign);
        if (!day)
            return std::nullopt;
        seconds = *day * secondsPerDay;
        if (text.IsAtEnd())
            return seconds;
        first = text.TakeNumber();
    }
    if (!text.Take(u':'))
        return std::nullopt;
    const auto time = ReadTime(text, first);
    return time && text.IsAtEnd() ? std::optional(seconds + *time) : std::nullopt;
}

} // namespace

double SecondsOfDate(double date) {
    const double day = std::trunc(date);
    return day * secondsPerDay + std::round(std::fabs(date - day) * secondsPerDay);
}

void CQueryTokens::Advance() {
    m_current = {};
    m_rest.remove_prefix(std::min(m_rest.find_first_not_of(u" \t\r\n"), m_rest.size()));
    if (m_rest.empty())
        return;
    const char16_t first = m_rest.front();
    if (first == u'[')
        TakeBracketed();
    else if (first == u'"' || first == u'\'')
        TakeQuoted(first);
    else if (first == u'#')
        TakeDate();
    else if (IsDigit(first) || (first == u'.' && m_rest.size() > 1 && IsDigit(m_rest[1])))
        TakeNumber();
    else if (IsWordUnit(first))
        TakeWord();
    else
        TakeSign();
}

bool CQueryTokens::Take(std::u16string_view word) {
    const bool isWord = m_current.kind == ETokenKind::Keyword || m_current.kind == ETokenKind::Sign;
    if (!isWord || m_current.text != word)
        return false;
    Advance();
    return true;
}

void CQueryTokens::TakeBracketed() {
    const auto end = m_rest.find(u']');
    m_current.kind = end == m_rest.npos ? ETokenKind::Other : ETokenKind::Name;
    m_current.text = m_rest.substr(1, end == m_rest.npos ? end : end - 1);
    m_rest.remove_prefix(std::min(end, m_rest.size() - 1) + 1);
}

void CQueryTokens::TakeQuoted(char16_t quote) {
    m_current.kind = ETokenKind::Other;
    for (std::size_t at = 1; at < m_rest.size(); ++at) {
        if (m_rest[at] != quote) {
            m_current.text.push_back(m_rest[at]);
        } else if (at + 1 < m_rest.size() && m_rest[at + 1] == quote) {
            m_current.text.push_back(m_rest[at++]);
        } else {
            m_current.kind = ETokenKind::Text;
            m_rest.remove_prefix(at + 1);
            return;
        }
    }
    m_rest = {};
}

void CQueryTokens::TakeDate() {
    const auto end = std::min(m_rest.find(u'#', 1), m_rest.size() - 1);
    const auto seconds = ReadDate(m_rest.substr(1, end == 0 ? 0 : end - 1));
    m_current.kind = seconds ? ETokenKind::Date : ETokenKind::Other;
    m_current.number = seconds.value_or(0);
    m_rest.remove_prefix(end + 1);
}

void CQueryTokens::TakeNumber() {
    const std::size_t length = std::min<std::size_t>(m_rest.size(), 60);
    std::string text(length, '?');
    std::ranges::transform(m_rest.substr(0, length), text.begin(),
                           [](char16_t unit) { return unit < 0x80 ? static_cast<char>(unit) : '?'; });
    const auto parsed = std::from_chars(text.data(), text.data() + length, m_current.number);
    const auto taken = static_cast<std::size_t>(parsed.ptr - text.data());
    const bool isWhole = parsed.ec == std::errc() && (taken == m_rest.size() || !IsWordUnit(m_rest[taken]));
    m_current.kind = isWhole ? ETokenKind::Number : ETokenKind::Other;
    m_rest.remove_prefix(std::max<std::size_t>(taken, 1));
}

void CQueryTokens::TakeWord() {
    const auto end = static_cast<std::size_t>(std::ranges::find_if_not(m_rest, IsWordUnit) - m_rest.begin());
    const std::u16string_view word = m_rest.substr(0, end);
    const auto keyword = std::ranges::find_if(
        keywords, [word](std::u16string_view candidate) { return Platform::IsEqualIgnoringCase(candidate, word); });
    m_current.kind = keyword == keywords.end() ? ETokenKind::Name : ETokenKind::Keyword;
    m_current.text = keyword == keywords.end() ? word : *keyword;
    m_rest.remove_prefix(end);
}

void CQueryTokens::TakeSign() {
    const auto sign = std::ranges::find(longSigns, m_rest.substr(0, 2));
    const bool isShort = shortSigns.find(m_rest.front()) != shortSigns.npos;
    m_current.kind = sign != longSigns.end() || isShort ? ETokenKind::Sign : ETokenKind::Other;
    m_current.text = m_rest.substr(0, sign != longSigns.end() ? 2 : 1);
    m_rest.remove_prefix(m_current.text.size());
}

} // namespace NSTQ::Providers
