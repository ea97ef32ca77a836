#include "SCTableFacts.h"

#include "SCPassWord.h"
#include "SCTerminal.h"
#include "tqcAccess/DataType.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace NSTQ::Tool {
namespace {

/// ADO's numbers are many; these words tell what people need to know.
const char* NameType(int type) {
    switch (static_cast<EDataType>(type)) {
    case EDataType::adUnsignedTinyInt:
    case EDataType::adSmallInt:
    case EDataType::adInteger:
    case EDataType::adBigInt:
        return "integer";
    case EDataType::adSingle:
    case EDataType::adDouble:
        return "number";
    case EDataType::adCurrency:
        return "currency";
    case EDataType::adNumeric:
    case EDataType::adDecimal:
        return "decimal";
    case EDataType::adDate:
        return "date";
    case EDataType::adBoolean:
        return "boolean";
    case EDataType::adGUID:
        return "guid";
    case EDataType::adBinary:
    case EDataType::adVarBinary:
    case EDataType::adLongVarBinary:
        return "binary";
    default:
        return "text";
    }
}

template <class TNumber>
SSampleValue MakeNumber(TNumber number) {
    std::array<char, 32> digits{};
    char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    return {SSampleValue::EKind::Number, std::string(digits.data(), end)};
}

/// Infinite numbers and NaNs, which JSON does not have, are texts.
template <class TNumber>
SSampleValue MakeReal(TNumber number) {
    SSampleValue value = MakeNumber(number);
    value.kind = std::isfinite(number) ? SSampleValue::EKind::Number : SSampleValue::EKind::Text;
    return value;
}

SSampleValue MakeText(const tqc_value& value) {
    constexpr int columnsShown = 60;
    // No column needs more than four bytes.
    const std::string text(value.text, std::min<std::size_t>(value.length, std::size_t{columnsShown + 1} * 4));
    const std::string cut = SCTerminal::CutToColumns(text, columnsShown);
    return {SSampleValue::EKind::Text, cut.size() < value.length ? cut + "..." : cut};
}

SSampleValue MakeSample(const tqc_value& value) {
    switch (value.type) {
    case TQC_VALUE_BOOL:
        return {SSampleValue::EKind::Bool, value.integer != 0 ? "true" : "false"};
    case TQC_VALUE_INTEGER:
        return MakeNumber(value.integer);
    case TQC_VALUE_FLOAT:
        return MakeReal(static_cast<float>(value.number));
    case TQC_VALUE_DOUBLE:
        return MakeReal(value.number);
    case TQC_VALUE_DECIMAL:
        return {SSampleValue::EKind::Number, std::string(value.text, value.length)};
    case TQC_VALUE_DATE:
    case TQC_VALUE_TEXT:
        return MakeText(value);
    case TQC_VALUE_BINARY:
        return {SSampleValue::EKind::Text, std::to_string(value.length) + " bytes"};
    default:
        return {};
    }
}

STableFacts Look(const CLibrarySource& source, std::size_t table) {
    STableFacts facts{.name = source.TableNames()[table], .rows = 0, .columns = {}, .failure = {}};
    try {
        CLibraryRows rows = source.Open(table);
        facts.rows = rows.Count();
        for (const CLibraryRows::SColumn& column : rows.Columns())
            facts.columns.push_back({column.name, NameType(column.type), {}});
        if (rows.Next())
            for (std::size_t i = 0; i < rows.Values().size(); ++i)
                facts.columns[i].first = MakeSample(rows.Values()[i]);
    } catch (const CFailure& failure) {
        facts.failure = failure;
    }
    return facts;
}

} // namespace

std::optional<std::vector<STableFacts>> SCTableFacts::Collect(const SOptions& options, const CInputFile& input) {
    std::optional<CLibrarySource> source;
    try {
        source.emplace(options, input, options.header, false);
    } catch (const CFailure& failure) {
        if (failure.Status() == EExitStatus::Password && !SCPassWord::IsGiven(options))
            return std::nullopt;
        throw;
    }
    std::vector<STableFacts> tables;
    for (std::size_t i = 0; i < source->TableNames().size(); ++i)
        tables.push_back(Look(*source, i));
    return tables;
}

} // namespace NSTQ::Tool
