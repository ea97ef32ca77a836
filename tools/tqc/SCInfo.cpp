#include "SCInfo.h"

#include "CFailure.h"
#include "CJsonWriter.h"
#include "CReporter.h"
#include "CRowEncoder.h"
#include "CTableSource.h"
#include "CTextFile.h"
#include "SCSources.h"
#include "SCTableFacts.h"
#include "SCTerminal.h"
#include "SCTypeNames.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace NSTQ::Tool {
namespace {

/// `middle` stands between date and time, `end` before the offset from UTC. Empty if the time is unknown.
std::string DescribeTime(const FILETIME& time, const char* middle, const char* end) {
    Platform::Port::SLocalTime local;
    char text[64] = "";
    if (!Platform::Port::ToLocalTime(time, local))
        return text;
    const int offset = std::abs(local.minutesEast);
    std::snprintf(text, sizeof text, "%04d-%02d-%02d%s%02d:%02d:%02d%s%c%02d%02d", local.year, local.month, local.day,
                  middle, local.hour, local.minute, local.second, end, local.minutesEast < 0 ? '-' : '+', offset / 60,
                  offset % 60);
    return text;
}

struct SLineEndName {
    const char* code; ///< as in JSON and on the command line
    const char* words;
};

SLineEndName NameLineEnd(const SLineEnd& lineEnd) {
    if (lineEnd.second != 0)
        return {"crlf", "CR LF"};
    return lineEnd.first == SCDataAccessDefine::LF_CODE ? SLineEndName{"lf", "LF"} : SLineEndName{"cr", "CR"};
}

/// The listings can be long, and a name may hold anything.
void PutText(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

/// UTF-8 in the encoding of the output.
std::string Encode(const std::string& text, CRowEncoder& encoder) {
    const char* field = text.data();
    const char** fields = &field;
    const auto length = static_cast<WORD>(text.size());
    const WORD* lengths = &length;
    encoder.Encode(fields, lengths, 1);
    return {fields[0], lengths[0]};
}

/// On one line, in the encoding of the output.
void PutLine(const std::string& text, CRowEncoder& encoder) {
    PutText(Encode(SCTerminal::OnOneLine(text), encoder) + '\n');
}

void PrintTables(const std::vector<CTableSource::STable>& tables, CRowEncoder& encoder) {
    PutText("name\trows\tcolumns\n");
    for (const CTableSource::STable& table : tables) {
        PutText(Encode(SCTerminal::OnOneLine(table.name), encoder) + '\t');
        PutText(table.size ? std::to_string(table.size->rows) + '\t' + std::to_string(table.size->columns) + '\n'
                           : "\t\n");
    }
}

/// Throws CFailure for the last one that could not be opened.
void ReportUnopened(const CTableSource& source, const std::vector<CTableSource::STable>& tables) {
    const bool isAnyOpen = std::ranges::any_of(tables, [](const auto& table) { return table.size.has_value(); });
    std::optional<CFailure> last;
    for (const CTableSource::STable& table : tables) {
        if (table.size)
            continue;
        if (last)
            CReporter::Print(last->what());
        last = source.DescribeUnopened(table, isAnyOpen ? "; the others are listed" : "");
    }
    if (last)
        throw *last;
}

void AddNumber(CJsonWriter& json, const char* key, std::optional<std::int64_t> number) {
    if (number)
        json.Add(key, *number);
    else
        json.AddNull(key);
}

void PrintTablesAsJson(const std::string& name, const CTableSource& source,
                       const std::vector<CTableSource::STable>& tables) {
    CJsonWriter json;
    json.BeginObject();
    json.Add("file", name);
    json.Add("type", SCTypeNames::Of(source.Type()));
    json.BeginList("tables");
    for (const CTableSource::STable& table : tables) {
        json.BeginObject();
        json.Add("name", table.name);
        AddNumber(json, "rows", table.size ? std::optional<std::int64_t>(table.size->rows) : std::nullopt);
        AddNumber(json, "columns", table.size ? std::optional<std::int64_t>(table.size->columns) : std::nullopt);
        json.EndObject();
    }
    json.EndList();
    json.EndObject();
    PutText(json.Finish());
}

void AddText(CJsonWriter& json, const char* key, const std::string& value) {
    if (value.empty())
        json.AddNull(key);
    else
        json.Add(key, value);
}

void AddTextFacts(CJsonWriter& json, const CTextFile& text) {
    const CTextFile::SCharacterSet set = text.CharacterSet();
    AddText(json, "characterSet", set.name);
    json.Add("bom", set.hasBom);
    json.Add("lineEnd", NameLineEnd(text.LineEnd()).code);
}

using TFacts = std::optional<std::vector<STableFacts>>;

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

void AddTableFacts(CJsonWriter& json, const TFacts& tables) {
    if (!tables)
        return json.AddNull("tables");
    json.BeginList("tables");
    for (const STableFacts& table : *tables) {
        json.BeginObject();
        json.Add("name", table.name);
        AddNumber(json, "rows", !table.failure ? std::optional(table.rows) : std::nullopt);
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
    json.EndList();
}

void ShowAsJson(ISource& source, const CInputFile& input, const TFacts& tables) {
    CJsonWriter json;
    json.BeginObject();
    json.Add("file", input.Name());
    AddText(json, "type", SCTypeNames::Of(source.Type()));
    json.Add("description", SCTypeNames::Describe(source.Type()));
    json.Add("size", std::int64_t{input.Head().Size()});
    AddText(json, "updated", DescribeTime(input.Head().UpdateTime(), "T", ""));
    source.LookInside();
    const CTextFile* const text = source.Text();
    if (source.Type() == SCDeclareConstant::SFT_XTQF)
        AddNumber(json, "dataFileSize", text == nullptr ? std::nullopt : std::optional(text->Size()));
    if (text != nullptr)
        AddTextFacts(json, *text);
    if (source.Tables() != nullptr)
        AddTableFacts(json, tables);
    json.EndObject();
    PutText(json.Finish());
}

std::string DescribeRows(const STableFacts& table) {
    if (table.failure)
        return "cannot be read";
    return std::to_string(table.rows) + (table.rows == 1 ? " row" : " rows");
}

/// Names and types in columns of their own.
void PrintTableFacts(const STableFacts& table, CRowEncoder& encoder) {
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

void PrintTableFacts(const TFacts& tables, unsigned codePage) {
    if (!tables) {
        PutText("Tables:        needs a password\n");
        return;
    }
    CRowEncoder encoder(codePage);
    for (const STableFacts& table : *tables) {
        PutText("\n");
        PrintTableFacts(table, encoder);
    }
}

/// Throws CFailure for the last table that cannot be read, and reports the others.
void ReportUnread(const TFacts& tables) {
    if (!tables)
        return;
    std::optional<CFailure> last;
    for (const STableFacts& table : *tables) {
        if (!table.failure)
            continue;
        if (last)
            CReporter::Print(last->what());
        last = table.failure;
    }
    if (last)
        throw *last;
}

void ShowInWords(ISource& source, const CInputFile& input) {
    const std::string time = DescribeTime(input.Head().UpdateTime(), " ", " ");
    std::printf("Type:          %s\n", SCTypeNames::Describe(source.Type()).c_str());
    std::printf("Size:          %lld bytes\n", static_cast<long long>(input.Head().Size()));
    std::printf("Updated:       %s\n", time.empty() ? "unknown" : time.c_str());
    source.LookInside();
    const CTextFile* const text = source.Text();
    if (source.Type() == SCDeclareConstant::SFT_XTQF)
        std::printf("Data file:     %s\n",
                    text != nullptr ? (std::to_string(text->Size()) + " bytes").c_str() : "needs a password");
    if (text != nullptr) {
        std::printf("Character set: %s\n", text->DescribeCharacterSet().c_str());
        std::printf("Line end:      %s\n", NameLineEnd(text->LineEnd()).words);
    }
}

} // namespace

void SCInfo::List(const SOptions& options, const CInputFile& input) {
    const auto opened = SCSources::Open(options, input);
    CTableSource* const source = opened->Tables();
    if (source == nullptr)
        throw CFailure(EExitStatus::Usage, input.Name(),
                       "list is for workbooks and databases; " + SCTypeNames::DescribeThis(opened->Type()));
    if (options.namesOnly) {
        for (const std::string& name : source->ListNames())
            PutText(SCTerminal::OnOneLine(name) + '\n');
        return;
    }
    const std::vector<CTableSource::STable> tables = source->ListTables();
    if (options.json) {
        PrintTablesAsJson(input.Name(), *source, tables);
    } else {
        CRowEncoder encoder(options.outputCodePage);
        PrintTables(tables, encoder);
    }
    // Only now, so that the damage of one does not hide the others.
    ReportUnopened(*source, tables);
}

void SCInfo::Show(const SOptions& options, const CInputFile& input) {
    const auto source = SCSources::Open(options, input);
    TFacts tables;
    if (source->Tables() != nullptr)
        tables = SCTableFacts::Collect(options, input);
    if (options.json)
        ShowAsJson(*source, input, tables);
    else
        ShowInWords(*source, input);
    if (!options.json && source->Tables() != nullptr)
        PrintTableFacts(tables, options.outputCodePage);
    ReportUnread(tables);
}

} // namespace NSTQ::Tool
