#include "CFormulaGuard.h"

#include "SOptions.h"

#include <algorithm>

namespace NSTQ::Tool {
namespace {

constexpr std::string_view decimalDigits = "0123456789";
constexpr std::string_view mark = "\xEF\xBB\xBF";

} // namespace

CFormulaGuard::CFormulaGuard(char separator) {
    // None of these is part of a character in any code page.
    for (const char c : {',', ';', '\t', '\r', '\n'})
        if (c != separator)
            m_separators += c;
}

bool CFormulaGuard::Guard(const char**& fields, const WORD*& lengths, DWORD count) {
    std::size_t guarded = 0;
    bool fits = true;
    // When the list grows its texts would move, and the fields would point to freed memory.
    m_guarded.resize(std::max<std::size_t>(m_guarded.size(), count));
    for (DWORD i = 0; i < count; ++i) {
        const std::string_view field(fields[i], lengths[i]);
        std::string& text = m_guarded[guarded];
        bool atStart = true;
        text.clear();
        Append(text, field, atStart);
        if (text.size() == field.size())
            continue;
        // Each apostrophe except the first follows a separator.
        if (text.size() > maxLength) {
            text.resize(text.find_last_of(m_separators, maxLength));
            fits = false;
        }
        if (guarded++ == 0) {
            m_fields.assign(fields, fields + count);
            m_lengths.assign(lengths, lengths + count);
        }
        m_fields[i] = text.data();
        m_lengths[i] = static_cast<WORD>(text.size());
    }
    if (guarded > 0) {
        fields = m_fields.data();
        lengths = m_lengths.data();
    }
    return fits;
}

void CFormulaGuard::Append(std::string& target, std::string_view text, bool& isAtStart) const {
    if (isAtStart && IsFormula(text))
        target += '\'';
    for (;;) {
        const std::size_t separator = text.find_first_of(m_separators);
        if (separator == std::string_view::npos)
            break;
        target += text.substr(0, separator + 1);
        text.remove_prefix(separator + 1);
        if (BeginsFormula(text))
            target += '\'';
        isAtStart = text.empty();
        if (isAtStart)
            return;
    }
    target += text;
    isAtStart = isAtStart && text.empty();
}

/// Whether a program that splits before the text would treat it as a formula. A space after a comma is frequent in
/// texts and does not count.
bool CFormulaGuard::BeginsFormula(std::string_view text) const {
    text.remove_prefix(std::min(text.find_first_not_of(" \""), text.size()));
    const std::string_view part = text.substr(0, text.find_first_of(m_separators));
    return IsFormula(part.substr(0, part.find_last_not_of(" \"") + 1));
}

bool CFormulaGuard::IsFormula(std::string_view field) {
    constexpr std::string_view starters = "=+-@\t\r ";
    while (field.starts_with(mark))
        field.remove_prefix(mark.size());
    if (field.empty() || starters.find(field[0]) == std::string_view::npos)
        return false;
    return (field[0] != '+' && field[0] != '-') || !IsNumber(field.substr(1));
}

bool CFormulaGuard::IsNumber(std::string_view digits) {
    const std::size_t exponent = std::min(digits.find_first_of("eE"), digits.size());
    const std::string_view mantissa = digits.substr(0, exponent);
    if (mantissa.find_first_not_of("0123456789.,") != std::string_view::npos ||
        mantissa.find_first_of(decimalDigits) == std::string_view::npos)
        return false;
    if (exponent == digits.size())
        return true;
    std::string_view power = digits.substr(exponent + 1);
    if (power.starts_with('+') || power.starts_with('-'))
        power.remove_prefix(1);
    return !power.empty() && power.find_first_not_of(decimalDigits) == std::string_view::npos;
}

} // namespace NSTQ::Tool
