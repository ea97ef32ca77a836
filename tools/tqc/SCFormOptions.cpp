#include "SCFormOptions.h"

#include "AsciiCase.h"
#include "CFailure.h"
#include "COutputTarget.h"
#include "tqcAccess/CodePage.h"

#include <CLI/CLI.hpp>

#include <cstdint>
#include <span>
#include <string_view>

namespace NSTQ::Tool {
namespace {

using EFormat = SOptions::EFormat;
using EBinary = SOptions::EBinary;

template <class T>
struct SName {
    std::string_view name;
    T value;
};

constexpr SName<EFormat> formats[] = {
    {"csv", EFormat::Csv}, {"jsonl", EFormat::JsonLines}, {"sqlite", EFormat::Sqlite}};
constexpr SName<EFormat> extensions[] = {{".jsonl", EFormat::JsonLines},
                                         {".ndjson", EFormat::JsonLines},
                                         {".sqlite", EFormat::Sqlite},
                                         {".sqlite3", EFormat::Sqlite},
                                         {".db", EFormat::Sqlite}};
constexpr SName<EBinary> binaries[] = {{"hex", EBinary::Hex}, {"base64", EBinary::Base64}, {"omit", EBinary::Omit}};

/// What the other formats have no use for.
constexpr const char* csvOptions[] = {"--output-separator", "--output-eol", "--add-bom", "--formula-guard"};

template <class T>
T Choose(const char* option, const std::string& value, std::span<const SName<T>> names) {
    std::string allowed;
    for (const SName<T>& entry : names) {
        if (value == entry.name)
            return entry.value;
        allowed.append(allowed.empty() ? "" : ", ").append(entry.name);
    }
    throw CLI::ValidationError(option, "\"" + value + "\" is invalid; allowed: " + allowed);
}

/// `take(value)` checks the value and stores it.
template <class TTake>
void AddText(CLI::App& app, const char* option, const char* type, const char* help, TTake take) {
    app.add_option_function<std::string>(option, take, help)->type_name(type);
}

/// By the extension of the output, unless an option gives it.
EFormat FormatOf(const CLI::App& app, const SOptions& options) {
    if (app.count("--to") > 0)
        return options.format;
    const std::string name = ToAsciiLowerText(options.output);
    for (const auto& entry : extensions)
        if (name.ends_with(entry.name))
            return entry.value;
    return EFormat::Csv;
}

} // namespace

void SCFormOptions::Add(CLI::App& app, SOptions& options) {
    AddText(app, "--to", "FORMAT", "csv | jsonl | sqlite (default: by the extension of -o, else csv)",
            [&options](const std::string& value) { options.format = Choose<EFormat>("--to", value, formats); });
    AddText(app, "--binary", "FORM",
            "bytes of databases: hex | base64 | omit (default: hex; in jsonl base64, in sqlite as they are)",
            [&options](const std::string& value) { options.binary = Choose<EBinary>("--binary", value, binaries); });
    app.add_flag_function(
           "--no-header", [](std::int64_t) {},
           "jsonl, sqlite, info: the first row is a row like any other; jsonl writes arrays")
        ->excludes("--header");
}

void SCFormOptions::Check(const CLI::App& app, SOptions& options) {
    if (options.command == SOptions::ECommand::Info)
        options.header = app.count("--no-header") == 0;
    if (options.command != SOptions::ECommand::Convert)
        return;
    options.format = FormatOf(app, options);
    if (options.format == EFormat::Csv)
        return;
    options.header = app.count("--no-header") == 0;
    for (const char* const option : csvOptions)
        if (app.count(option) > 0)
            throw CFailure(EExitStatus::Usage, std::string(option) + " is for CSV; leave it out, or add --to csv");
    if (app.count("--output-encoding") > 0 && options.outputCodePage != Platform::CP_UTF8)
        throw CFailure(EExitStatus::Usage,
                       "--output-encoding is for CSV, since the other formats are UTF-8; leave it out");
    options.outputCodePage = Platform::CP_UTF8;
    if (options.format == EFormat::Sqlite && options.sheet.empty())
        options.allTables = true;
}

void SCFormOptions::CheckTyped(const SOptions& options, const std::string& file) {
    const bool isLimited =
        options.maxFields < maxLength || options.maxLineSize < maxLength || options.maxFieldSize < maxLength;
    if (isLimited)
        throw CFailure(EExitStatus::Usage, file,
                       "--max-fields, --max-line-size and --max-field-size are for text and for CSV; leave them out");
}

std::string SCFormOptions::ExtensionOf(EFormat format) {
    switch (format) {
    case EFormat::JsonLines:
        return ".jsonl";
    case EFormat::Sqlite:
        return ".sqlite";
    default:
        return ".csv";
    }
}

} // namespace NSTQ::Tool
