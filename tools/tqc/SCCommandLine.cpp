#include "SCCommandLine.h"

#include "CFailure.h"
#include "CFixSourceReader.h"
#include "CFormulaGuard.h"
#include "COutputTarget.h"
#include "SCCodePageNames.h"
#include "SCErrorText.h"
#include "SCHelpText.h"
#include "SCTypeNames.h"
#include "tqcAccess/CodePage.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <iostream>
#include <span>
#include <string_view>

namespace NSTQ::Tool {
namespace {

template <class T>
struct SChoice {
    const char* name;
    T value;
};

constexpr SChoice<SOptions::EOnError> ON_ERROR[] = {{"stop", SOptions::OE_STOP}, {"skip", SOptions::OE_SKIP}};
constexpr SChoice<SLineEnd> LINE_ENDS[] = {{"crlf", {SCDataAccessDefine::CR_CODE, SCDataAccessDefine::LF_CODE}},
                                           {"lf", {SCDataAccessDefine::LF_CODE, 0}},
                                           {"cr", {SCDataAccessDefine::CR_CODE, 0}}};
constexpr SChoice<bool> NUMBERS[] = {{"15", false}, {"full", true}};
/// The parser puts the option's name before the message.
[[noreturn]] void Refuse(const char* option, const std::string& value, const std::string& allowed) {
    throw CLI::ValidationError(option, "\"" + value + "\" cannot be used; allowed: " + allowed);
}

template <class T>
std::string Names(std::span<const SChoice<T>> choices) {
    std::string names;
    for (const SChoice<T>& choice : choices)
        names += (names.empty() ? "" : ", ") + std::string(choice.name);
    return names;
}

template <class T>
T Choose(const char* option, const std::string& value, std::span<const SChoice<T>> choices) {
    for (const SChoice<T>& choice : choices)
        if (value == choice.name)
            return choice.value;
    Refuse(option, value, Names(choices));
}

char ParseSeparator(const char* option, const std::string& value) {
    if (value == "tab" || value == "\\t")
        return SCDataAccessDefine::TAB_CODE;
    constexpr std::string_view refused = "\"\r\n\x1A";
    if (value.size() != 1 || static_cast<unsigned char>(value[0]) >= 0x80 ||
        refused.find(value[0]) != std::string_view::npos)
        Refuse(option, value, "one ASCII character that is no quote and no line end, \\t or tab");
    return value[0];
}

template <class T>
T ParseNumber(const char* option, const std::string& value, T lowest, T highest) {
    T number{};
    const char* const end = value.data() + value.size();
    const auto [stop, error] = std::from_chars(value.data(), end, number);
    if (error != std::errc{} || stop != end || number < lowest || number > highest)
        Refuse(option, value, std::to_string(lowest) + " to " + std::to_string(highest));
    return number;
}

/// The options, registered one group at a time.
class CParser {
public:
    explicit CParser(SOptions& options) : m_options(options) {
        m_app.name("tqc");
        m_app.set_version_flag("--version", "tqc " TQC_VERSION);
        m_app.get_formatter()->column_width(33);
        m_app.get_formatter()->label("SUBCOMMAND", "COMMAND");
        m_app.footer(SCHelpText::EXAMPLES);
        m_app.require_subcommand(0, 1);
        m_pFiles = AddFiles(m_app, "the files to read; - is standard input, which needs --type");
        AddSourceOptions();
        AddRowOptions();
        AddOutputOptions();
        AddConvertOptions();
        m_app.option_defaults()->group("Options");
        AddCommand(SOptions::CMD_CONVERT, "convert", "Writes files as CSV.", SCHelpText::CONVERT);
        CLI::App* const info =
            AddCommand(SOptions::CMD_INFO, "info", "Shows a file's type, size, update time and character set.",
                       SCHelpText::INFO);
        AddCommand(SOptions::CMD_PREVIEW, "preview", "Shows a file's first rows; fixed-length text under a ruler.",
                   SCHelpText::PREVIEW);
        CLI::App* const list =
            AddCommand(SOptions::CMD_LIST, "list",
                       "Lists a workbook's sheets or a database's tables: name, rows, columns.", SCHelpText::LIST);
        for (CLI::App* const command : {info, list})
            command->add_flag("--json", m_options.bJson, "as JSON in UTF-8");
        list->add_flag("--names", m_options.bNamesOnly, "the names alone, for completion")->group("");
    }

    bool Parse(int argc, const char* const* argv) {
        try {
            m_app.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            if (error.get_exit_code() == 0) {
                m_app.exit(error);
                if (!std::cout.flush())
                    throw CFailure(ES_OUTPUT_FAILED, "standard output", SCErrorText::OfSystem(errno));
                return false;
            }
            throw CFailure(ES_USAGE, std::string(error.what()) + "; see: tqc --help");
        }
        if (m_options.files.empty())
            throw CFailure(ES_USAGE, "no file given; see: tqc --help");
        CheckFiles();
        CheckOutputs();
        CheckTogether();
        return true;
    }

private:
    CLI::Option* AddFiles(CLI::App& app, const char* help) {
        return app.add_option("FILE", m_options.files, help)->type_name("");
    }

    CLI::App* AddCommand(SOptions::ECommand eCommand, const char* name, const char* description, const char* footer) {
        CLI::App* const command = m_app.add_subcommand(name, description);
        AddFiles(*command, eCommand == SOptions::CMD_CONVERT ? "the files to read" : "the file to look at");
        command->parse_complete_callback([this, eCommand] { m_options.eCommand = eCommand; });
        command->group("Commands (convert when none is given)");
        command->footer(footer);
        command->fallthrough();
        return command;
    }

    /// `take(option, value)` checks the value and stores it.
    template <class Take>
    void Add(const char* option, const char* type, const std::string& help, Take take) {
        m_app
            .add_option_function<std::string>(
                option, [option, take](const std::string& value) { take(option, value); }, help)
            ->type_name(type);
    }

    void AddNumber(const char* option, DWORD& target, const std::string& help) {
        Add(option, "N", help + ", 1 to " + std::to_string(LIMIT_MAX),
            [&target](const char* name, const auto& value) {
                target = ParseNumber<DWORD>(name, value, 1, LIMIT_MAX);
            });
    }

    void AddCount(const char* option, std::uint64_t& target, const std::string& help) {
        Add(option, "N", help, [&target](const char* name, const auto& value) {
            target = ParseNumber<std::uint64_t>(name, value, 0, std::numeric_limits<std::uint64_t>::max());
        });
    }

    void AddSourceOptions() {
        m_app.option_defaults()->group("Source");
        Add("--type", "TYPE", "what the file is: " + SCTypeNames::All(), [this](const char* name, const auto& value) {
            m_options.type = SCTypeNames::Find(value);
            if (!m_options.type)
                Refuse(name, value, SCTypeNames::All());
        });
        Add("--separator", "CHAR", "the field separator: one character, \\t or tab",
            [this](const char* name, const auto& value) { m_options.separator = ParseSeparator(name, value); });
        Add("--eol", "EOL", "the line end of the file: crlf, lf or cr", [this](const char* name, const auto& value) {
            m_options.lineEnd = Choose<SLineEnd>(name, value, LINE_ENDS);
        });
        Add("--encoding", "SET", "of the text read: auto, ansi (the code page), utf-8 or a page such as shift_jis",
            [this](const char* name, const auto& value) { TakeEncoding(name, value); });
        Add("--code-page", "PAGE", "the code page of input and output, instead of the locale's, such as 932 or utf-8",
            [this](const char* name, const auto& value) {
                m_options.uCodePage = ParsePage(name, value);
                m_options.bEncodingGiven = true;
            });
        Add("--widths", "N,N,...", "the bytes of each column of fixed-length text",
            [this](const char* name, const auto& value) { TakeWidths(name, value); });
        Add("--sheet", "NAME|N", "the sheet or table: its name, or its number from 1 (default: the first)",
            [this](const char* name, const auto& value) {
                if (value.empty())
                    Refuse(name, value, "a name, or a number from 1");
                m_options.strSheet = value;
            });
        m_app.add_flag("--header", m_options.bHeader,
                       "write the column names first: the first row, or those of a database's table");
        m_app.add_option("--password-file", m_options.strPassWordFile, "the password is the first line of FILE")
            ->type_name("FILE");
        Add("--password-fd", "N", "the password is the first line read from descriptor N",
            [this](const char* name, const auto& value) {
                m_options.iPassWordDescriptor = ParseNumber<int>(name, value, 0, 1'000'000);
            });
        m_app.add_flag_callback(
            "--no-quote-newline", [this] { m_options.bQuoteNewLine = false; },
            "a line end inside quotes of delimited text ends the row");
        // Scripts may still ask for what is the default now.
        m_app.add_flag_callback("--quote-newline", [] {})->group("");
    }

    static unsigned ParsePage(const char* name, const std::string& value) {
        const auto page = SCCodePageNames::Find(value);
        if (!page)
            Refuse(name, value, SCCodePageNames::Allowed());
        return *page;
    }

    void TakeEncoding(const char* name, const std::string& value) {
        if (value == "auto")
            return;
        m_options.bEncodingGiven = true;
        m_options.eCharSet = CSourceDataInfo::RCS_ANSI;
        if (value == "ansi")
            return;
        const auto page = SCCodePageNames::Find(value);
        if (!page)
            Refuse(name, value, "auto, ansi, " + SCCodePageNames::Allowed());
        if (*page == Platform::CP_UTF8) {
            m_options.eCharSet = CSourceDataInfo::RCS_UTF8;
            return;
        }
        m_encodingPage = page;
    }

    void TakeWidths(const char* name, const std::string& value) {
        constexpr std::size_t shownMax = 40;
        for (std::size_t start = 0; start <= value.size();) {
            const std::size_t comma = std::min(value.find(',', start), value.size());
            m_options.widths.push_back(ParseNumber<WORD>(name, value.substr(start, comma - start), 1, 65535));
            start = comma + 1;
        }
        const std::uint64_t size = CFixSourceReader::LayoutSize(m_options.widths);
        if (size > CFixSourceReader::LAYOUT_MAX)
            Refuse(name, value.size() > shownMax ? value.substr(0, shownMax) + "..." : value,
                   "widths that come, with 1 more for each column, to at most " +
                       std::to_string(CFixSourceReader::LAYOUT_MAX) + "; these come to " + std::to_string(size));
    }

    /// What only the options together tell. Throws CFailure.
    void CheckTogether() {
        if (m_options.bFormulaGuard)
            m_options.dwMaxFieldSize = std::min(m_options.dwMaxFieldSize, CFormulaGuard::FIELD_LENGTH_MAX);
        m_options.uOutputCodePage = m_outputPage.value_or(m_options.uCodePage);
        m_options.uCodePage = m_encodingPage.value_or(m_options.uCodePage);
        if (m_options.bAddMark && m_options.uOutputCodePage != Platform::CP_UTF8)
            throw CFailure(ES_USAGE, "--add-bom is for UTF-8 output; add --output-encoding utf-8");
        if (m_options.bStrict && m_bReplace)
            throw CFailure(ES_USAGE, "--strict and --replace exclude each other");
        if (m_options.widths.empty())
            return;
        if (m_options.type && m_options.type != SCDeclareConstant::SFT_FIX)
            throw CFailure(ES_USAGE, "--widths is for fixed-length text; leave out --type or give --type fix");
        m_options.type = SCDeclareConstant::SFT_FIX;
    }

    void AddRowOptions() {
        m_app.option_defaults()->group("Rows");
        AddNumber("--max-fields", m_options.dwMaxFields, "the most fields kept of a row");
        AddNumber("--max-line-size", m_options.dwMaxLineSize, "rows of that many bytes are left out");
        AddNumber("--max-field-size", m_options.dwMaxFieldSize, "the most bytes kept of a field");
        AddCount("--skip", m_options.ullSkip, "leave out the first N rows");
        AddCount("--limit", m_options.ullLimit, "stop after N rows");
    }

    void AddOutputOptions() {
        m_app.option_defaults()->group("Output");
        Add("--output-separator", "CHAR", "the separator to write (,)", [this](const char* name, const auto& value) {
            m_options.cOutputSeparator = ParseSeparator(name, value);
        });
        Add("--output-eol", "EOL", "the line end to write (crlf)", [this](const char* name, const auto& value) {
            m_options.outputLineEnd = Choose<SLineEnd>(name, value, LINE_ENDS);
        });
        Add("--output-encoding", "PAGE", "the encoding to write, such as utf-8 or shift_jis (the code page)",
            [this](const char* name, const auto& value) { m_outputPage = ParsePage(name, value); });
        m_app.add_flag("--add-bom", m_options.bAddMark, "write the mark EF BB BF before UTF-8 output");
        m_app.add_flag("--formula-guard", m_options.bFormulaGuard,
                       "write ' before fields that a spreadsheet takes for formulas; numbers stay; changes the data");
        Add("--numbers", "DIGITS", "of workbooks and databases: 15 digits (the default), or full: all that they have",
            [this](const char* name, const auto& value) {
                m_options.bFullNumbers = Choose<bool>(name, value, NUMBERS);
            });
        m_app.add_flag("--quiet", m_options.bQuiet, "only errors: no progress and no reports of rows");
    }

    void AddConvertOptions() {
        m_app.option_defaults()->group("Output");
        AddPath("-o,--output", "OUT.csv", m_options.strOutput, "the file to write; standard output without it");
        AddPath("--out-dir", "DIR", m_options.strOutputFolder, "write each FILE to its own file in DIR, with .csv");
        m_app.option_defaults()->group("Rows that cannot be taken whole");
        Add("--on-error", "HOW", "stop at the first of them, or skip them; without it they are cut and written",
            [this](const char* name, const auto& value) {
                m_options.eOnError = Choose<SOptions::EOnError>(name, value, ON_ERROR);
            });
        AddPath("--rejects", "FILE", m_options.strRejects, "keep skipped rows in FILE; implies --on-error skip");
        m_app.add_flag("--strict", m_options.bStrict, "rows with a character that the output does not have as well");
        m_app.add_flag("--replace", m_bReplace, "replace such characters and report their rows (as without it)");
    }

    void AddPath(const char* option, const char* type, std::string& target, const std::string& help) {
        Add(option, type, help, [&target](const char* name, const auto& value) {
            if (value.empty())
                Refuse(name, value, "a path");
            target = value;
        });
    }

    /// Throws CFailure.
    void CheckFiles() const {
        if (!m_app.get_subcommands().empty() && m_pFiles->count() > 0)
            throw CFailure(ES_USAGE, "a command stands before the files: tqc " +
                                         m_app.get_subcommands()[0]->get_name() + " " + m_options.files[0]);
        if (m_options.eCommand != SOptions::CMD_CONVERT && m_options.files.size() > 1)
            throw CFailure(ES_USAGE, m_options.files[1], "one file at a time, please");
        const auto inputs = std::count(m_options.files.begin(), m_options.files.end(), "-");
        if (inputs > 1)
            throw CFailure(ES_USAGE, "-", "standard input can be read only once");
        if (inputs > 0 && m_options.iPassWordDescriptor == 0)
            throw CFailure(ES_USAGE, "-", "standard input cannot hold the password as well; use --password-file");
    }

    /// Throws CFailure.
    void CheckOutputs() {
        if (m_options.eCommand != SOptions::CMD_CONVERT &&
            !(m_options.strOutput + m_options.strOutputFolder + m_options.strRejects).empty())
            throw CFailure(ES_USAGE,
                           m_app.get_subcommands()[0]->get_name() +
                               " shows on standard output; --output, --out-dir and --rejects are for convert");
        if (!m_options.strOutput.empty() && !m_options.strOutputFolder.empty())
            throw CFailure(ES_USAGE, "--output and --out-dir exclude each other");
        if (m_options.strRejects.empty())
            return;
        if (m_options.eOnError == SOptions::OE_STOP)
            throw CFailure(ES_USAGE, "--rejects is for --on-error skip");
        if (COutputTarget::IsStandardOutputName(m_options.strRejects) &&
            COutputTarget::IsStandardOutputName(m_options.strOutput) && m_options.strOutputFolder.empty())
            throw CFailure(ES_USAGE, "--rejects and the output cannot both be standard output");
        m_options.eOnError = SOptions::OE_SKIP;
    }

    SOptions& m_options;
    CLI::App m_app{SCHelpText::DESCRIPTION};
    CLI::Option* m_pFiles = nullptr; ///< given without a command
    // Where one of these is not given, --code-page or the locale tells.
    std::optional<unsigned> m_encodingPage;
    std::optional<unsigned> m_outputPage;
    bool m_bReplace = false;
};

} // namespace

std::optional<SOptions> SCCommandLine::Parse(int argc, const char* const* argv) {
    SOptions options;
    options.uCodePage = SCCodePageNames::OfLocale();
    CParser parser(options);
    if (!parser.Parse(argc, argv))
        return std::nullopt;
    return options;
}

} // namespace NSTQ::Tool
