#include "SCInfo.h"

#include "CFailure.h"
#include "CJsonWriter.h"
#include "CReporter.h"
#include "CRowEncoder.h"
#include "CSource.h"
#include "SCTerminal.h"
#include "SCTypeNames.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <optional>

namespace NSTQ::Tool {
namespace {

std::string DescribeTime(const FILETIME& time, const char* form) {
    constexpr LONGLONG stepsPerSecond = 10'000'000;
    constexpr LONGLONG secondsFrom1601To1970 = 11'644'473'600;
    const auto steps = static_cast<LONGLONG>((std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime);
    if (steps == 0)
        return "";
    const auto seconds = static_cast<std::time_t>(steps / stepsPerSecond - secondsFrom1601To1970);
    std::tm local{};
    char text[64] = "";
    if (::localtime_r(&seconds, &local) != nullptr)
        std::strftime(text, sizeof text, form, &local);
    return text;
}

struct SLineEndName {
    const char* code; ///< as in JSON and on the command line
    const char* words;
};

SLineEndName NameLineEnd(const SLineEnd& lineEnd) {
    if (lineEnd.cPost != 0)
        return {"crlf", "CR LF"};
    return lineEnd.cPre == SCDataAccessDefine::LF_CODE ? SLineEndName{"lf", "LF"} : SLineEndName{"cr", "CR"};
}

bool MayBeText(SCDeclareConstant::ESourceFileType type) {
    return SCTypeNames::IsText(type) || type == SCDeclareConstant::SFT_UNKNOWN;
}

/// The listings can be long, and a name may hold anything.
void PutText(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
}

void PrintTables(const std::vector<CSource::STable>& tables, CRowEncoder& encoder) {
    PutText("name\trows\tcolumns\n");
    for (const CSource::STable& table : tables) {
        const std::string shown = SCTerminal::OnOneLine(table.strName);
        const char* name = shown.data();
        const char** names = &name;
        const auto length = static_cast<WORD>(shown.size());
        const WORD* lengths = &length;
        encoder.Encode(names, lengths, 1);
        PutText(std::string(names[0], lengths[0]) + '\t');
        PutText(table.size ? std::to_string(table.size->dwRows) + '\t' + std::to_string(table.size->dwColumns) + '\n'
                           : "\t\n");
    }
}

/// Throws CFailure for the last one that could not be opened.
void ReportUnopened(const CSource& source, const std::vector<CSource::STable>& tables) {
    const bool isAnyOpen = std::ranges::any_of(tables, [](const auto& table) { return table.size.has_value(); });
    std::optional<CFailure> last;
    for (const CSource::STable& table : tables) {
        if (table.size)
            continue;
        if (last)
            CReporter::Print(last->what());
        last = source.DescribeUnopened(table, isAnyOpen ? "; the others are listed" : "");
    }
    if (last)
        throw *last;
}

void AddNumber(CJsonWriter& json, const char* key, std::optional<DWORD> number) {
    if (number)
        json.Add(key, std::int64_t{*number});
    else
        json.AddNull(key);
}

void PrintTablesAsJson(const SOptions& options, const CSource& source, const std::vector<CSource::STable>& tables) {
    CJsonWriter json;
    json.BeginObject();
    json.Add("file", options.strFile);
    json.Add("type", SCTypeNames::Of(source.Type()));
    json.BeginList("tables");
    for (const CSource::STable& table : tables) {
        json.BeginObject();
        json.Add("name", table.strName);
        AddNumber(json, "rows", table.size ? std::optional(table.size->dwRows) : std::nullopt);
        AddNumber(json, "columns", table.size ? std::optional(table.size->dwColumns) : std::nullopt);
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

void AddTextFacts(CJsonWriter& json, const CSource& source) {
    const CSource::SCharacterSet set = source.CharacterSet();
    AddText(json, "characterSet", set.strName);
    json.Add("mark", set.bMark);
    json.Add("lineEnd", NameLineEnd(source.LineEnd()).code);
}

void ShowAsJson(const SOptions& options) {
    CSource source(options);
    const bool isPackage = source.Type() == SCDeclareConstant::SFT_XTQF;
    CJsonWriter json;
    json.BeginObject();
    json.Add("file", options.strFile);
    AddText(json, "type", SCTypeNames::Of(source.Type()));
    json.Add("description", CSource::DescribeType(source.Type()));
    json.Add("size", std::int64_t{source.Size()});
    AddText(json, "updated", DescribeTime(source.UpdateTime(), "%Y-%m-%dT%H:%M:%S%z"));
    const bool isOpen = isPackage && source.LookIntoPackage();
    if (isOpen)
        json.Add("dataFileSize", std::int64_t{source.Size()});
    else if (isPackage)
        json.AddNull("dataFileSize");
    if (isOpen || MayBeText(source.Type()))
        AddTextFacts(json, source);
    json.EndObject();
    PutText(json.Finish());
}

void ShowInWords(const SOptions& options) {
    CSource source(options);
    const std::string time = DescribeTime(source.UpdateTime(), "%Y-%m-%d %H:%M:%S %z");
    std::printf("Type:          %s\n", CSource::DescribeType(source.Type()).c_str());
    std::printf("Size:          %lld bytes\n", static_cast<long long>(source.Size()));
    std::printf("Updated:       %s\n", time.empty() ? "unknown" : time.c_str());
    const bool isPackage = source.Type() == SCDeclareConstant::SFT_XTQF;
    const bool isOpen = isPackage && source.LookIntoPackage();
    if (isOpen)
        std::printf("Data file:     %lld bytes\n", static_cast<long long>(source.Size()));
    else if (isPackage)
        std::printf("Data file:     needs a password\n");
    if (isOpen || MayBeText(source.Type())) {
        std::printf("Character set: %s\n", source.DescribeCharacterSet().c_str());
        std::printf("Line end:      %s\n", NameLineEnd(source.LineEnd()).words);
    }
}

} // namespace

void SCInfo::List(const SOptions& options) {
    CSource source(options);
    if (options.bNamesOnly) {
        for (const std::string& name : source.ListNames())
            PutText(SCTerminal::OnOneLine(name) + '\n');
        return;
    }
    const std::vector<CSource::STable> tables = source.ListTables();
    if (options.bJson) {
        PrintTablesAsJson(options, source, tables);
    } else {
        CRowEncoder encoder(options.uOutputCodePage);
        PrintTables(tables, encoder);
    }
    // Only now, so that the damage of one does not hide the others.
    ReportUnopened(source, tables);
}

void SCInfo::Show(const SOptions& options) {
    if (options.bJson)
        ShowAsJson(options);
    else
        ShowInWords(options);
}

} // namespace NSTQ::Tool
