#include "SCFormOptions.h"

#include "AsciiCase.h"
#include "CFailure.h"
#include "COutputTarget.h"
#include "tqcAccess/CodePage.h"
#include "tqcAccess/UserLocale.h"

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
constexpr const char* csvOptions[] = {"--output-separator", "--output-eol", "--add-bom", "--formula-guard",
                                      "--decimal",          "--booleans",   "--null"};

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

/// Throws what `Choose` does unless a user locale may have the form.
void CheckForm(const char* option, const std::string& value, const Platform::SUserLocale& locale,
               const char* allowed) {
    if (!Platform::SetUserLocale(locale))
        throw CLI::ValidationError(option, "\"" + value + "\" is invalid; allowed: " + allowed);
    Platform::SetUserLocale({});
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

/// "TRUE/FALSE"
void TakeBooleans(const std::string& value, SOptions& options) {
    constexpr const char* option = "--booleans";
    const std::size_t slash = value.find('/');
    options.trueText = value.substr(0, slash);
    options.falseText = slash == std::string::npos ? "" : value.substr(slash + 1);
    const bool isPair = slash != std::string::npos && options.falseText.find('/') == std::string::npos;
    CheckForm(option, value, {.trueText = isPair ? options.trueText : "\n", .falseText = options.falseText},
              "two texts of ASCII characters, at most 31 each, with a slash between them, such as yes/no");
}

void AddDateForms(CLI::App& app, SOptions& options) {
    AddText(app, "--date-format", "FORMAT", "dates, such as dd.MM.yyyy (default: yyyy/MM/dd)",
            [&options](const std::string& value) {
                CheckForm("--date-format", value, {.dateFormat = value},
                          "yyyy, yy, MM, M, dd, d and other characters");
                options.dateFormat = value;
                options.hasDateForm = true;
            });
    AddText(app, "--time-format", "FORMAT", "times, such as HH:mm (default: H:mm:ss)",
            [&options](const std::string& value) {
                CheckForm("--time-format", value, {.timeFormat = value},
                          "HH, H, hh, h, mm, m, ss, s, tt and other characters");
                options.timeFormat = value;
                options.hasDateForm = true;
            });
}

/// What no other option gives.
void TakeIso(const CLI::App& app, SOptions& options) {
    if (options.dateFormat.empty())
        options.dateFormat = "yyyy-MM-dd";
    if (options.timeFormat.empty())
        options.timeFormat = "HH:mm:ss";
    if (app.count("--booleans") > 0)
        return;
    options.trueText = "true";
    options.falseText = "false";
}

/// The forms of values of workbooks and databases.
void AddValueForms(CLI::App& app, SOptions& options) {
    app.add_flag_function(
        "--iso", [](std::int64_t) {}, "dates as 2024-05-06, times as 07:08:09, booleans as true and false");
    AddDateForms(app, options);
    AddText(app, "--decimal", "CHAR", "decimal sign of numbers (default: .)", [&options](const std::string& value) {
        const bool isOne = value.size() == 1;
        CheckForm("--decimal", value, {.decimalSign = isOne ? value[0] : ' '}, "one character such as , or .");
        options.decimalSign = value[0];
    });
    AddText(app, "--booleans", "TRUE/FALSE", "booleans as these texts (default: -1/0)",
            [&options](const std::string& value) { TakeBooleans(value, options); });
    AddText(app, "--null", "TEXT", "missing values as this text (default: empty)",
            [&options](const std::string& value) {
                CheckForm("--null", value, {.nullText = value}, "at most 31 ASCII characters");
                options.nullText = value;
            });
}

} // namespace

void SCFormOptions::AddFormat(CLI::App& app, SOptions& options) {
    AddText(app, "--to", "FORMAT", "csv | jsonl | sqlite (default: by the extension of -o, else csv)",
            [&options](const std::string& value) { options.format = Choose<EFormat>("--to", value, formats); });
}

void SCFormOptions::AddForms(CLI::App& app, SOptions& options) {
    AddValueForms(app, options);
    AddText(app, "--binary", "FORM",
            "bytes: hex | base64 | omit (default: hex; in jsonl base64, in sqlite as they are)",
            [&options](const std::string& value) { options.binary = Choose<EBinary>("--binary", value, binaries); });
}

void SCFormOptions::AddNoHeader(CLI::App& app) {
    app.add_flag_function(
           "--no-header", [](std::int64_t) {},
           "the first row is a row like any other, in jsonl (which then writes arrays), sqlite and info")
        ->excludes("--header");
}

void SCFormOptions::Apply(const SOptions& options) {
    using namespace Platform;
    constexpr EBytesForm bytesForms[] = {EBytesForm::Hex, EBytesForm::Base64, EBytesForm::Empty};
    SUserLocale locale;
    if (!options.dateFormat.empty())
        locale.dateFormat = options.dateFormat;
    if (!options.timeFormat.empty())
        locale.timeFormat = options.timeFormat;
    locale.decimalSign = options.decimalSign;
    locale.numberDigits = options.fullNumbers ? ENumberDigits::Full : ENumberDigits::Default;
    locale.trueText = options.trueText;
    locale.falseText = options.falseText;
    locale.nullText = options.nullText;
    locale.bytesForm = bytesForms[static_cast<std::size_t>(options.binary.value_or(EBinary::Hex))];
    SetUserLocale(locale);
}

void SCFormOptions::Check(const CLI::App& app, SOptions& options) {
    if (app.count("--iso") > 0)
        TakeIso(app, options);
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
