#include "providers/workbook/CFormatCode.h"

#include "platform/codepage/AsciiCase.h"

#include <algorithm>
#include <charconv>

namespace NSTQ::Providers {

namespace {

bool StartsWithWord(std::string_view text, std::string_view word) {
    return Platform::IsEqualIgnoringCase(text.substr(0, word.size()), word);
}

} // namespace

/// The content of a section so far.
struct CFormatCode::SSigns {
    SSection section;
    bool hasDay = false;
    bool hasTime = false;
    bool hasMonthOrMinute = false;
    bool hasElapsed = false;
    bool hasEra = false; ///< letters that show eras, weekdays and other calendars, and may be stray ones
    bool hasDigit = false;
    bool hasText = false;

    EDateKind Kind() const {
        if (hasElapsed)
            return EDateKind::Elapsed;
        if (hasDay || (hasEra && !hasDigit && !hasText))
            return EDateKind::Date;
        if (hasTime)
            return EDateKind::Time;
        return hasMonthOrMinute ? EDateKind::Date : EDateKind::None;
    }
    bool IsBlank() const { return Kind() == EDateKind::None && !hasDigit; }
    void NoteLetter(std::string_view code);
};

void CFormatCode::SSigns::NoteLetter(std::string_view code) {
    switch (Platform::ToAsciiLower(code[0])) {
    case 'y':
    case 'd':
        hasDay = true;
        break;
    case 'm':
        hasMonthOrMinute = true;
        break;
    case 'h':
    case 's':
        hasTime = true;
        break;
    case 'e':
        // The exponent of a number is followed by its sign or digits; a year of an era is not.
        if (code.size() < 2 || std::string_view("+-0#?").find(code[1]) == std::string_view::npos)
            hasDay = true;
        break;
    case 'a':
    case 'b':
    case 'g':
    case 'r':
        hasEra = true;
        break;
    case '0':
    case '#':
    case '?':
        hasDigit = true;
        break;
    case '@':
        hasText = true;
        break;
    default:
        break;
    }
}

/// The length of the bracketed part at the beginning of `code`.
std::size_t CFormatCode::ReadBracket(std::string_view code, SSigns& signs) {
    const std::size_t end = std::min(code.find(']'), code.size() - 1);
    const std::string_view content = code.substr(1, end - 1);
    const char letter = content.empty() ? '\0' : Platform::ToAsciiLower(content[0]);
    const bool isSame = std::all_of(content.begin(), content.end(),
                                    [letter](char other) { return Platform::ToAsciiLower(other) == letter; });
    if (isSame && (letter == 'h' || letter == 'm' || letter == 's'))
        signs.hasElapsed = true;
    else
        ReadCondition(content, signs.section);
    return end + 1;
}

/// Does not change the section when the text is not a condition but a colour or a language.
void CFormatCode::ReadCondition(std::string_view condition, SSection& section) {
    constexpr struct {
        std::string_view sign;
        EComparison comparison;
    } comparisons[] = {
        {"<=", EComparison::LessOrEqual}, {">=", EComparison::GreaterOrEqual}, {"<>", EComparison::NotEqual},
        {"<", EComparison::Less},         {">", EComparison::Greater},         {"=", EComparison::Equal},
    };
    for (const auto& comparison : comparisons) {
        if (!condition.starts_with(comparison.sign))
            continue;
        condition.remove_prefix(comparison.sign.size());
        const char* const end = condition.data() + condition.size();
        double limit = 0;
        const auto parsed = std::from_chars(condition.data(), end, limit);
        if (parsed.ec == std::errc() && parsed.ptr == end) {
            section.limit = limit;
            section.comparison = comparison.comparison;
        }
        return;
    }
}

/// The length of the next element of a format code; its meaning goes to `signs`.
std::size_t CFormatCode::ReadElement(std::string_view code, SSigns& signs) {
    switch (code[0]) {
    case '"':
        return std::min(code.find('"', 1), code.size() - 1) + 1;
    case '\\':
    case '_':
    case '*':
        return std::min<std::size_t>(2, code.size());
    case '[':
        return ReadBracket(code, signs);
    default:
        break;
    }
    for (const std::string_view word : {"general", "am/pm", "a/p"}) {
        if (!StartsWithWord(code, word))
            continue;
        (word == "general" ? signs.hasDigit : signs.hasTime) = true;
        return word.size();
    }
    signs.NoteLetter(code);
    return 1;
}

CFormatCode::CFormatCode(std::string_view code) {
    std::array<bool, std::tuple_size_v<decltype(m_sections)>> isBlank = {};
    for (bool isLast = false; !isLast && m_count < m_sections.size();) {
        SSigns signs;
        while (!code.empty() && code[0] != ';')
            code.remove_prefix(ReadElement(code, signs));
        isLast = code.empty();
        code.remove_prefix(isLast ? 0 : 1);
        if (signs.hasText && signs.IsBlank())
            continue;
        signs.section.kind = signs.Kind();
        isBlank[m_count] = signs.IsBlank();
        m_sections[m_count++] = signs.section;
    }
    FillInConditions();
    const auto shown = static_cast<std::size_t>(std::find(isBlank.begin(), isBlank.end(), false) - isBlank.begin());
    for (std::size_t i = 0; i < m_count; ++i) {
        if (isBlank[i] && shown < m_count)
            m_sections[i].kind = m_sections[shown].kind;
    }
}

void CFormatCode::FillInConditions() {
    const auto fillIn = [this](std::size_t section, EComparison comparison) {
        if (m_sections[section].comparison == EComparison::Open)
            m_sections[section].comparison = comparison;
    };
    if (m_count == 0)
        return;
    if (m_count == m_sections.size()) {
        fillIn(0, EComparison::Greater);
        const EComparison first = m_sections[0].comparison;
        const bool isForLesser = first == EComparison::Less || first == EComparison::LessOrEqual;
        fillIn(1, isForLesser ? EComparison::Greater : EComparison::Less);
    }
    if (m_count == 2)
        fillIn(0, EComparison::GreaterOrEqual);
    fillIn(m_count - 1, EComparison::Always);
}

bool CFormatCode::Takes(const SSection& section, double number) {
    switch (section.comparison) {
    case EComparison::Less:
        return number < section.limit;
    case EComparison::LessOrEqual:
        return number <= section.limit;
    case EComparison::Equal:
        return number == section.limit;
    case EComparison::NotEqual:
        return number != section.limit;
    case EComparison::Greater:
        return number > section.limit;
    case EComparison::GreaterOrEqual:
        return number >= section.limit;
    case EComparison::Open:
    case EComparison::Always:
        return true;
    }
    return true;
}

EDateKind CFormatCode::KindOf(double number) const {
    for (std::size_t i = 0; i < m_count; ++i) {
        if (Takes(m_sections[i], number))
            return m_sections[i].kind;
    }
    return EDateKind::None;
}

std::optional<EDateKind> CFormatCode::CommonKind() const {
    if (m_count == 0)
        return EDateKind::None;
    const SSection& last = m_sections[m_count - 1];
    const bool isSame = std::all_of(m_sections.begin(), m_sections.begin() + static_cast<std::ptrdiff_t>(m_count),
                                    [&](const SSection& section) { return section.kind == last.kind; });
    const bool isForAll = last.comparison == EComparison::Always || last.kind == EDateKind::None;
    return isSame && isForAll ? std::optional(last.kind) : std::nullopt;
}

} // namespace NSTQ::Providers
