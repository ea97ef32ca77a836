#include "SCInfo.h"

#include "CFailure.h"
#include "CJsonWriter.h"
#include "CReporter.h"
#include "CRowEncoder.h"
#include "CTableFacts.h"
#include "CTableSource.h"
#include "CTextFile.h"
#include "SCSources.h"
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

void PrintTables(const std::vector<CTableSource::STable>& tables, CRowEncoder& encoder) {
    PutText("name\trows\tcolumns\n");
    for (const CTableSource::STable& table : tables) {
        PutText(encoder.EncodeText(SCTerminal::OnOneLine(table.name)) + '\t');
        PutText(table.size ? std::to_string(table.size->rows) + '\t' + std::to_string(table.size->columns) + '\n'
                           : "\t\n");
    }
}

/// Throws CFailure for the last one that could not be opened.
void ReportUnopened(const CTableSource& source, const std::vector<CTableSource::STable>& tables) {
    const bool isAnyOpen = std::ranges::any_of(tables, [](const auto& table) { return table.size.has_value(); });
    std::vector<CFailure> failures;
    for (const CTableSource::STable& table : tables)
        if (!table.size)
            failures.push_back(source.DescribeUnopened(table, isAnyOpen ? "; the others are listed" : ""));
    CReporter::Throw(failures);
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

bool IsDelimited(const ISource& source) {
    const auto type = source.Type();
    return type == SCDeclareConstant::SFT_CSV || type == SCDeclareConstant::SFT_TXT ||
           type == SCDeclareConstant::SFT_XTQF;
}

std::string DescribeSeparator(char separator) {
    switch (separator) {
    case SCDataAccessDefine::CAMMA_CODE:
        return "comma";
    case SCDataAccessDefine::TAB_CODE:
        return "TAB";
    case ';':
        return "semicolon";
    default:
        return {separator};
    }
}

void AddTextFacts(CJsonWriter& json, const CTextFile& text) {
    const CTextFile::SCharacterSet set = text.CharacterSet();
    AddText(json, "characterSet", set.name);
    json.Add("bom", set.hasBom);
    json.Add("lineEnd", NameLineEnd(text.LineEnd()).code);
}

void ShowAsJson(ISource& source, const CInputFile& input, const CTableFacts* tables) {
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
    if (text != nullptr && IsDelimited(source))
        json.Add("separator", std::string(1, text->Separator()));
    if (tables != nullptr)
        tables->AddTo(json);
    json.EndObject();
    PutText(json.Finish());
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
        if (IsDelimited(source))
            std::printf("Separator:     %s\n", DescribeSeparator(text->Separator()).c_str());
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
    std::optional<CTableFacts> tables;
    if (source->Tables() != nullptr)
        tables.emplace(options, input);
    if (options.json)
        ShowAsJson(*source, input, tables ? &*tables : nullptr);
    else
        ShowInWords(*source, input);
    if (tables && !options.json)
        tables->Print(options.outputCodePage);
    if (tables)
        tables->Check();
}

} // namespace NSTQ::Tool
