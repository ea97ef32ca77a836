#include "CTableFacts.h"

#include "CLibrarySource.h"
#include "CReporter.h"
#include "CRowEncoder.h"
#include "SCPassWord.h"
#include "SCTerminal.h"
#include "SCValueText.h"
#include "tqcAccess/DataType.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

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

/// Infinite numbers and NaNs, which JSON does not have, are texts.
SSampleValue MakeNumber(const tqc_value& value) {
    const bool isFinite = value.type == TQC_VALUE_INTEGER || std::isfinite(value.number);
    return {isFinite ? SSampleValue::EKind::Number : SSampleValue::EKind::Text, SCValueText::Of(value)};
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
        return {SSampleValue::EKind::Bool, SCValueText::Of(value)};
    case TQC_VALUE_INTEGER:
    case TQC_VALUE_FLOAT:
    case TQC_VALUE_DOUBLE:
        return MakeNumber(value);
    case TQC_VALUE_DECIMAL:
        return {SSampleValue::EKind::Number, SCValueText::Of(value)};
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

void AddSample(CJsonWriter& json, const char* key, const SSampleValue& value) {
    switch (value.kind) {
    case SSampleValue::EKind::Null:
        return json.AddNull(key);
    case SSampleValue::EKind::Bool:
        return json.Add(key, value.text == "true");
    case SSampleValue::EKind::Number:
        return json.AddNumber(key, value.text);
    case SSampleValue::EKind::Text:
        return json.Add(key, value.text);
    }
}

void AddTable(CJsonWriter& json, const STableFacts& table) {
    json.BeginObject();
    json.Add("name", table.name);
    if (table.failure)
        json.AddNull("rows");
    else
        json.Add("rows", table.rows);
    json.BeginList("columns");
    for (const STableFacts::SColumn& column : table.columns) {
        json.BeginObject();
        json.Add("name", column.name);
        json.Add("type", column.type);
        AddSample(json, "first", column.first);
        json.EndObject();
    }
    json.EndList();
    json.EndObject();
}

void Put(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

/// A line, in the encoding of the output.
void PutLine(const std::string& text, CRowEncoder& encoder) {
    Put(encoder.EncodeText(SCTerminal::OnOneLine(text)) + '\n');
}

std::string DescribeRows(const STableFacts& table) {
    if (table.failure)
        return "cannot be read";
    return std::to_string(table.rows) + (table.rows == 1 ? " row" : " rows");
}

/// Names and types in columns of their own.
void PrintTable(const STableFacts& table, CRowEncoder& encoder) {
    int nameWidth = 0;
    int typeWidth = 0;
    for (const STableFacts::SColumn& column : table.columns) {
        nameWidth = std::max(nameWidth, SCTerminal::WidthOf(SCTerminal::OnOneLine(column.name)));
        typeWidth = std::max(typeWidth, SCTerminal::WidthOf(column.type));
    }
    PutLine(table.name + ": " + DescribeRows(table), encoder);
    for (const STableFacts::SColumn& column : table.columns) {
        std::string line = "  " + SCTerminal::PadToWidth(SCTerminal::OnOneLine(column.name), nameWidth) + "  ";
        line += column.first.text.empty() ? column.type
                                          : SCTerminal::PadToWidth(column.type, typeWidth) + "  " + column.first.text;
        PutLine(line, encoder);
    }
}

} // namespace

CTableFacts::CTableFacts(const SOptions& options, const CInputFile& input) {
    std::optional<CLibrarySource> source;
    try {
        source.emplace(options, input, options.header, false);
    } catch (const CFailure& failure) {
        m_isLocked = failure.Status() == EExitStatus::Password && !SCPassWord::IsGiven(options);
        if (!m_isLocked)
            m_failure = failure;
        return;
    }
    for (std::size_t i = 0; i < source->TableNames().size(); ++i)
        m_tables.push_back(Look(*source, i));
}

void CTableFacts::Print(unsigned codePage) const {
    if (m_isLocked)
        Put("Tables:        needs a password\n");
    CRowEncoder encoder(codePage);
    for (const STableFacts& table : m_tables) {
        Put("\n");
        PrintTable(table, encoder);
    }
}

void CTableFacts::AddTo(CJsonWriter& json) const {
    if (m_isLocked || m_failure)
        return json.AddNull("tables");
    json.BeginList("tables");
    for (const STableFacts& table : m_tables)
        AddTable(json, table);
    json.EndList();
}

void CTableFacts::Check() const {
    std::vector<CFailure> failures;
    if (m_failure)
        failures.push_back(*m_failure);
    for (const STableFacts& table : m_tables)
        if (table.failure)
            failures.push_back(*table.failure);
    CReporter::Throw(failures);
}

} // namespace NSTQ::Tool
