#include "CFormulaGuard.h"

#include <algorithm>

namespace NSTQ::Tool {
namespace {

constexpr std::string_view DIGITS = "0123456789";

} // namespace

void CFormulaGuard::Guard(const char**& ppFields, const WORD*& pLengths, DWORD dwCount) {
    std::size_t guarded = 0;
    for (DWORD i = 0; i < dwCount; ++i) {
        const std::string_view field(ppFields[i], pLengths[i]);
        if (!IsFormula(field))
            continue;
        if (guarded == 0) {
            m_vecFields.assign(ppFields, ppFields + dwCount);
            m_vecLengths.assign(pLengths, pLengths + dwCount);
            // Texts that move when the list grows would leave the fields behind.
            m_vecGuarded.resize(std::max<std::size_t>(m_vecGuarded.size(), dwCount));
        }
        std::string& text = m_vecGuarded[guarded++];
        text.assign(1, '\'').append(field);
        m_vecFields[i] = text.data();
        m_vecLengths[i] = static_cast<WORD>(text.size());
    }
    if (guarded == 0)
        return;
    ppFields = m_vecFields.data();
    pLengths = m_vecLengths.data();
}

bool CFormulaGuard::IsFormula(std::string_view field) {
    constexpr std::string_view starters = "=+-@\t\r ";
    if (field.empty() || starters.find(field[0]) == std::string_view::npos)
        return false;
    return (field[0] != '+' && field[0] != '-') || !IsNumber(field.substr(1));
}

bool CFormulaGuard::IsNumber(std::string_view digits) {
    const std::size_t exponent = std::min(digits.find_first_of("eE"), digits.size());
    const std::string_view mantissa = digits.substr(0, exponent);
    if (mantissa.find_first_not_of("0123456789.,") != std::string_view::npos ||
        mantissa.find_first_of(DIGITS) == std::string_view::npos)
        return false;
    if (exponent == digits.size())
        return true;
    std::string_view power = digits.substr(exponent + 1);
    if (power.starts_with('+') || power.starts_with('-'))
        power.remove_prefix(1);
    return !power.empty() && power.find_first_not_of(DIGITS) == std::string_view::npos;
}

} // namespace NSTQ::Tool
