#include "providers/workbook/CColumnTypes.h"

#include "providers/workbook/SCCellValue.h"

#include <limits>

namespace NSTQ::Providers {

using enum EDataType;

namespace {

/// Digits before the point of a number that is certainly finite, and of one that is certainly a date, in both date
/// systems.
constexpr std::uint16_t maxDigits = 300;
constexpr std::uint16_t dateDigits = 5;
constexpr double dateLimit = 100000;

} // namespace

std::vector<SFieldType> CColumnTypes::GetTypes(const SCellRange& range) const {
    std::vector<SFieldType> types(range.last.column - range.first.column + 1);
    for (std::size_t i = 0; i < types.size() && range.first.column + i < m_columns.size(); ++i) {
        const EDataType type = m_columns[range.first.column + i].type;
        if (type != adEmpty)
            types[i].type = type;
    }
    return types;
}

/// Digits with a point among them or without, and a '-' before them.
bool CColumnTypes::IsUsualNumber(std::string_view text, std::size_t mostDigits) {
    const auto skipDigits = [](const char* at, const char* end) {
        while (at != end && *at >= '0' && *at <= '9')
            ++at;
        return at;
    };
    const char* const end = text.data() + text.size();
    const char* const begin = text.data() + (text.starts_with('-') ? 1 : 0);
    const char* const point = skipDigits(begin, end);
    if (point == begin || static_cast<std::size_t>(point - begin) > mostDigits)
        return false;
    return point == end || (*point == '.' && skipDigits(point + 1, end) == end);
}

void CColumnTypes::TakeOther(const SCell& cell, SColumn& column) const {
    const EDataType type = TypeOf(cell);
    column.type = column.type == adEmpty || column.type == type ? type : adVarWChar;
    column.kind = cell.kind;
    column.style = cell.style;
    const auto kind = m_book->GetCommonDateKind(cell.style);
    column.digits = 0;
    column.limit = 0;
    if (type == adDouble && kind == EDateKind::None) {
        column.digits = maxDigits;
        column.limit = std::numeric_limits<double>::infinity();
    } else if (type == adDate && (kind == EDateKind::Date || kind == EDateKind::Time)) {
        column.digits = dateDigits;
        column.limit = dateLimit;
    }
}

EDataType CColumnTypes::TypeOf(const SCell& cell) const {
    switch (cell.kind) {
    case ECellKind::Number:
        return TypeOfNumber(cell.number, cell.style);
    case ECellKind::NumberDigits:
        return TypeOfDigits(cell.text, cell.style);
    case ECellKind::Boolean:
        return SCCellValue::ParseBoolean(cell.text) ? adBoolean : adVarWChar;
    case ECellKind::IsoDate:
        if (SCCellValue::ParseIsoDate(cell.text))
            return adDate;
        if (const auto span = SCCellValue::ParseIsoDuration(cell.text); span && SCCellValue::SpanText(*span))
            return adVarWChar;
        return TypeOfDigits(cell.text, cell.style);
    case ECellKind::Shared:
    case ECellKind::SharedDigits:
    case ECellKind::Text:
    case ECellKind::WideText:
    case ECellKind::Error:
        break;
    }
    return adVarWChar;
}

EDataType CColumnTypes::TypeOfDigits(std::string_view text, std::uint32_t style) const {
    const std::optional<double> number = SCCellValue::ParseNumber(text);
    return number ? TypeOfNumber(*number, style) : adVarWChar;
}

EDataType CColumnTypes::TypeOfNumber(double number, std::uint32_t style) const {
    const EDateKind kind = m_book->GetDateKind(style, number);
    if (kind == EDateKind::Elapsed)
        return SCCellValue::SpanText(number) ? adVarWChar : adDouble;
    if (kind != EDateKind::None && SCCellValue::DateOfNumber(number, kind, m_book->IsDate1904()))
        return adDate;
    return adDouble;
}

} // namespace NSTQ::Providers
