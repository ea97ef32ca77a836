#include "SCCommandLine.h"

#include "CFailure.h"
#include "CFixSourceReader.h"
#include "CFormulaGuard.h"
#include "CHelpFormatter.h"
#include "COutputTarget.h"
#include "SCCodePageNames.h"
#include "SCFormOptions.h"
#include "SCHelpText.h"
#include "SCTypeNames.h"
#include "platform/Port.h"
#include "tqcAccess/CodePage.h"
#include "tqcAccess/ErrorText.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <iostream>
#include <memory>
#include <span>
#include <string_view>
#include <thread>

namespace NSTQ::Tool {
namespace {

template <class T>
struct SChoice {
    const char* name;
    T value;
};

constexpr SChoice<SOptions::EOnError> onErrors[] = {{"stop", SOptions::EOnError::Stop},
                                                    {"skip", SOptions::EOnError::Skip}};
constexpr SChoice<SLineEnd> lineEnds[] = {{"crlf", {SCDataAccessDefine::CR_CODE, SCDataAccessDefine::LF_CODE}},
                                          {"lf", {SCDataAccessDefine::LF_CODE, 0}},
                                          {"cr", {SCDataAccessDefine::CR_CODE, 0}}};
constexpr SChoice<bool> numbers[] = {{"15", false}, {"full", true}};
/// The parser puts the option's name before the message.
[[noreturn]] void Refuse(const char* option, const std::string& value, const std::string& allowed) {
    throw CLI::ValidationError(option, "\"" + value + "\" is invalid; allowed: " + allowed);
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
        Refuse(option, value, "one ASCII character other than a quote or line end, or \\t, or tab");
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
        // A path may begin with '/' on Windows too.
        m_app.allow_windows_style_options(false);
        m_app.set_version_flag("--version", "tqc " TQC_VERSION);
        m_app.formatter(std::make_shared<CHelpFormatter>());
        m_app.footer(SCHelpText::examples);
        m_app.require_subcommand(0, 1);
        m_files = AddFiles(m_app, "files to read; - is standard input and needs --type");
        AddSourceOptions();
        AddRowOptions();
        AddTargetOptions();
        AddOutputOptions();
        AddValueOptions();
        AddErrorOptions();
        m_app.option_defaults()->group("Options");
        AddCommand(SOptions::ECommand::Convert, "convert", "Writes files as CSV.", SCHelpText::convert);
        CLI::App* const info = AddCommand(
            SOptions::ECommand::Info, "info",
            "Shows a file's type, size, time and encoding, or tables with their columns.", SCHelpText::info);
        AddCommand(SOptions::ECommand::Preview, "preview",
                   "Shows a file's first rows; fixed-length text under a ruler.", SCHelpText::preview);
        CLI::App* const list =
            AddCommand(SOptions::ECommand::List, "list",
                       "Lists a workbook's sheets or a database's tables: name, rows, columns.", SCHelpText::list);
        for (CLI::App* const command : {info, list})
            command->add_flag("--json", m_options.json, "write JSON in UTF-8");
        list->add_flag("--names", m_options.namesOnly, "names only, for completion")->group("");
    }

    bool Parse(int argc, const char* const* argv) {
        try {
            m_app.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            if (error.get_exit_code() == 0) {
                m_app.exit(error);
                if (!std::cout.flush())
                    throw CFailure(EExitStatus::OutputFailed, "standard output",
                                   Platform::GetErrorText(Platform::Port::CodeOfErrno(errno)));
                return false;
            }
            throw CFailure(EExitStatus::Usage, std::string(error.what()) + "; see: tqc --help");
        }
        if (m_options.files.empty())
            throw CFailure(EExitStatus::Usage, "no file given; see: tqc --help");
        ConvertPaths();
        CheckFiles();
        CheckOutputs();
        CheckTogether();
        SCFormOptions::Check(m_app, m_options);
        CheckTables();
        return true;
    }

private:
    CLI::Option* AddFiles(CLI::App& app, const char* help) {
        return app.add_option("FILE", m_options.files, help)->type_name("");
    }

    CLI::App* AddCommand(SOptions::ECommand command, const char* name, const char* description, const char* footer) {
        CLI::App* const app = m_app.add_subcommand(name, description);
        AddFiles(*app, command == SOptions::ECommand::Convert ? "files to read" : "file to examine");
        app->parse_complete_callback([this, command] { m_options.command = command; });
        app->group("Commands (convert when none is given)");
        app->footer(footer);
        app->fallthrough();
        return app;
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
        Add(option, "N", help + ", 1 to " + std::to_string(maxLength),
            [&target](const char* name, const auto& value) {
                target = ParseNumber<DWORD>(name, value, 1, maxLength);
            });
    }

    void AddCount(const char* option, std::uint64_t& target, const std::string& help) {
        Add(option, "N", help, [&target](const char* name, const auto& value) {
            target = ParseNumber<std::uint64_t>(name, value, 0, std::numeric_limits<std::uint64_t>::max());
        });
    }

    void AddSourceOptions() {
        m_app.option_defaults()->group("Input");
        AddTextOptions();
        AddContentOptions();
    }

    /// How the bytes are to be understood.
    void AddTextOptions() {
        Add("--type", "TYPE", "type of the file (default: detected): " + SCTypeNames::All(),
            [this](const char* name, const auto& value) {
                m_options.type = SCTypeNames::Find(value);
                if (!m_options.type)
                    Refuse(name, value, SCTypeNames::All());
            });
        Add("--separator", "CHAR", "field separator: one character, \\t or tab",
            [this](const char* name, const auto& value) { m_options.separator = ParseSeparator(name, value); });
        Add("--eol", "EOL", "line end of the file (default: detected): crlf | lf | cr",
            [this](const char* name, const auto& value) {
                m_options.lineEnd = Choose<SLineEnd>(name, value, lineEnds);
            });
        Add("--encoding", "SET",
            "encoding of the input: auto (default), ansi (the code page), or a name, such as utf-8, shift_jis, "
            "utf-16le",
            [this](const char* name, const auto& value) { TakeEncoding(name, value); });
        Add("--code-page", "PAGE", "code page of input and output, such as 932 or utf-8 (default: the locale's)",
            [this](const char* name, const auto& value) {
                m_options.codePage = ParsePage(name, value);
                m_options.isEncodingGiven = true;
            });
    }

    /// What is read, and how it is opened.
    void AddContentOptions() {
        Add("--widths", "N,N,...", "width in bytes of each column of fixed-length text",
            [this](const char* name, const auto& value) { TakeWidths(name, value); });
        Add("--sheet", "NAME|N",
            "sheet or table: its name, a pattern with * and ?, or its number counted from 1 (default: 1)",
            [this](const char* name, const auto& value) {
                if (value.empty())
                    Refuse(name, value, "a name, a pattern, or a number from 1");
                m_options.sheet = value;
            });
        m_app.add_flag("--header", m_options.header,
                       "write the column names first; for text and workbooks the first row is the header row");
        SCFormOptions::AddNoHeader(m_app);
        m_app.add_option("--password-file", m_options.passwordFile, "read the password from the first line of FILE")
            ->type_name("FILE");
        Add("--password-fd", "N", "read the password from the first line of file descriptor N",
            [this](const char* name, const auto& value) {
                m_options.passwordDescriptor = ParseNumber<int>(name, value, 0, 1'000'000);
            });
        m_app.add_flag_callback(
            "--no-quote-newline", [this] { m_options.quoteNewLine = false; },
            "a line end inside quotes ends the row");
        // Accepted for scripts, although it is the default now.
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
        m_options.isEncodingGiven = true;
        m_options.charSet = CSourceDataInfo::RCS_ANSI;
        if (value == "ansi")
            return;
        const auto page = SCCodePageNames::Find(value);
        if (!page)
            m_options.encoding = SCTextEncodings::Find(value);
        if (m_options.encoding)
            return;
        if (!page)
            Refuse(name, value, "auto, ansi, " + SCCodePageNames::Allowed() + ", " + SCTextEncodings::Allowed());
        if (*page == Platform::CP_UTF8) {
            m_options.charSet = CSourceDataInfo::RCS_UTF8;
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
        if (size > CFixSourceReader::maxLayout)
            Refuse(name, value.size() > shownMax ? value.substr(0, shownMax) + "..." : value,
                   "widths whose sum, plus 1 for each column, is at most " +
                       std::to_string(CFixSourceReader::maxLayout) + "; it is " + std::to_string(size));
    }

    /// Checks the options together. Throws CFailure.
    void CheckTogether() {
        if (m_options.formulaGuard)
            m_options.maxFieldSize = std::min(m_options.maxFieldSize, CFormulaGuard::maxFieldLength);
        m_options.outputCodePage = m_outputPage.value_or(m_options.codePage);
        m_options.codePage = m_encodingPage.value_or(m_options.codePage);
        if (m_options.addBom && m_options.outputCodePage != Platform::CP_UTF8)
            throw CFailure(EExitStatus::Usage, "--add-bom is for UTF-8 output; add --output-encoding utf-8");
        if (m_options.strict && m_isReplaceGiven)
            throw CFailure(EExitStatus::Usage, "--strict and --replace exclude each other");
        if (m_options.widths.empty())
            return;
        if (m_options.type && m_options.type != SCDeclareConstant::SFT_FIX)
            throw CFailure(EExitStatus::Usage,
                           "--widths is for fixed-length text; leave out --type or give --type fix");
        m_options.type = SCDeclareConstant::SFT_FIX;
    }

    void AddRowOptions() {
        m_app.option_defaults()->group("Rows and columns");
        AddCount("--skip", m_options.skip, "leave out N lines before the header row; rows of a sheet");
        AddCount("--skip-rows", m_options.skipRows, "leave out N rows after the header row");
        AddCount("--limit", m_options.limit, "stop after N rows");
        AddColumnOptions();
    }

    void AddColumnOptions() {
        AddColumns("--columns", m_options.columns, "write only these columns, in this order: Name,3,5-7");
        AddColumns("--exclude", m_options.excludedColumns, "write all columns but these");
    }

    void AddColumns(const char* option, CColumnList& target, const std::string& help) {
        Add(option, "LIST", help, [&target](const char* name, const auto& value) {
            const auto list = CColumnList::Parse(value);
            if (!list)
                Refuse(name, value, "names, numbers from 1 and ranges such as 3-5, separated by commas");
            target = *list;
        });
    }

    void AddOutputOptions() {
        Add("--output-separator", "CHAR", "separator of the output (default: ,)",
            [this](const char* name, const auto& value) { m_options.outputSeparator = ParseSeparator(name, value); });
        Add("--output-eol", "EOL", "line end of the output: crlf | lf | cr (default: crlf)",
            [this](const char* name, const auto& value) {
                m_options.outputLineEnd = Choose<SLineEnd>(name, value, lineEnds);
            });
        Add("--output-encoding", "PAGE",
            "encoding of the output, such as utf-8 or shift_jis (default: the code page)",
            [this](const char* name, const auto& value) { m_outputPage = ParsePage(name, value); });
        m_app.add_flag("--add-bom", m_options.addBom, "write a BOM at the beginning of UTF-8 output");
        m_app.add_flag(
            "--formula-guard", m_options.formulaGuard,
            "write ' before fields that spreadsheets treat as formulas, except numbers; this changes the data");
    }

    /// Where the output goes, and what it is.
    void AddTargetOptions() {
        m_app.option_defaults()->group("Output");
        AddPath("-o,--output", "OUT", m_options.output, "output file (default: standard output)");
        AddPath("--out-dir", "DIR", m_options.outputFolder,
                "write each FILE to a file of its own in DIR, with the extension .csv");
        m_app.add_flag("--all", m_options.allTables,
                       "write every sheet or table to a file of its own in --out-dir; so does a pattern in --sheet");
        Add("--jobs", "N", "convert N inputs at the same time with --out-dir; auto: as many as there are processors",
            [this](const char* name, const auto& value) { TakeJobs(name, value); });
        SCFormOptions::AddFormat(m_app, m_options);
    }

    void AddValueOptions() {
        m_app.option_defaults()->group("Values of workbooks and databases");
        SCFormOptions::AddForms(m_app, m_options);
        Add("--numbers", "DIGITS", "digits of numbers: 15 | full (default: 15)",
            [this](const char* name, const auto& value) {
                m_options.fullNumbers = Choose<bool>(name, value, numbers);
            });
    }

    void AddErrorOptions() {
        m_app.option_defaults()->group("Errors");
        Add("--on-error", "HOW", "invalid rows: stop | skip (default: truncate the row and write it)",
            [this](const char* name, const auto& value) {
                m_options.onError = Choose<SOptions::EOnError>(name, value, onErrors);
            });
        AddPath("--rejects", "FILE", m_options.rejects, "write skipped rows to FILE; implies --on-error skip");
        m_app.add_flag("--strict", m_options.strict,
                       "treat rows with characters the output encoding cannot represent as invalid, too");
        m_app.add_flag("--replace", m_isReplaceGiven, "replace such characters and report their rows (default)");
        AddNumber("--max-fields", m_options.maxFields, "maximum number of fields of a row");
        AddNumber("--max-line-size", m_options.maxLineSize, "rows of N bytes or more are left out");
        AddNumber("--max-field-size", m_options.maxFieldSize, "maximum size of a field in bytes");
        m_app.add_flag("--quiet", m_options.quiet, "report errors only: no progress, no reports about rows");
    }

    void AddPath(const char* option, const char* type, std::string& target, const std::string& help) {
        Add(option, type, help, [&target](const char* name, const auto& value) {
            if (value.empty())
                Refuse(name, value, "a path");
            target = value;
        });
    }

    void ConvertPaths() {
        for (std::string& file : m_options.files)
            file = Platform::Port::ToPortPath(file);
        for (std::string* const path :
             {&m_options.output, &m_options.outputFolder, &m_options.rejects, &m_options.passwordFile})
            *path = Platform::Port::ToPortPath(*path);
    }

    /// Throws CFailure.
    void CheckFiles() const {
        if (!m_app.get_subcommands().empty() && m_files->count() > 0)
            throw CFailure(EExitStatus::Usage, "the command must come before the files: tqc " +
                                                   m_app.get_subcommands()[0]->get_name() + " " + m_options.files[0]);
        if (m_options.command != SOptions::ECommand::Convert && m_options.files.size() > 1)
            throw CFailure(EExitStatus::Usage, m_options.files[1], "this command takes one file");
        const auto inputs = std::count(m_options.files.begin(), m_options.files.end(), "-");
        if (inputs > 1)
            throw CFailure(EExitStatus::Usage, "-", "standard input can be read only once");
        if (inputs > 0 && m_options.passwordDescriptor == 0)
            throw CFailure(EExitStatus::Usage, "-",
                           "standard input cannot be both the file and the password; use --password-file");
    }

    /// Throws CFailure.
    void CheckOutputs() {
        if (m_options.command != SOptions::ECommand::Convert &&
            !(m_options.output + m_options.outputFolder + m_options.rejects).empty())
            throw CFailure(
                EExitStatus::Usage,
                m_app.get_subcommands()[0]->get_name() +
                    " writes to standard output; --output, --out-dir and --rejects are options of convert");
        CheckJobs();
        if (!m_options.output.empty() && !m_options.outputFolder.empty())
            throw CFailure(EExitStatus::Usage, "--output and --out-dir exclude each other");
        if (m_options.rejects.empty())
            return;
        if (m_options.onError == SOptions::EOnError::Stop)
            throw CFailure(EExitStatus::Usage, "--rejects needs --on-error skip");
        if (COutputTarget::IsStandardOutputName(m_options.rejects) &&
            COutputTarget::IsStandardOutputName(m_options.output) && m_options.outputFolder.empty())
            throw CFailure(EExitStatus::Usage, "--rejects and the output cannot both be standard output");
        m_options.onError = SOptions::EOnError::Skip;
    }

    /// Throws CFailure.
    void CheckJobs() {
        if (!m_jobs)
            return;
        if (m_options.outputFolder.empty())
            throw CFailure(EExitStatus::Usage, "--jobs is for outputs in a folder; add --out-dir DIR");
        if (!m_options.rejects.empty())
            throw CFailure(EExitStatus::Usage,
                           "--rejects takes the rows of one input after the other; leave out --jobs");
        m_options.jobs = *m_jobs;
    }

    void TakeJobs(const char* name, const std::string& value) {
        m_jobs = value == "auto" ? 0 : ParseNumber<unsigned>(name, value, 0, SOptions::maxJobs);
        if (*m_jobs == 0)
            m_jobs = std::clamp(std::thread::hardware_concurrency(), 1U, SOptions::maxJobs);
    }

    /// Throws CFailure.
    void CheckTables() const {
        if (!m_options.allTables)
            return;
        if (!m_options.sheet.empty())
            throw CFailure(EExitStatus::Usage, "--all and --sheet exclude each other");
        if (m_options.command != SOptions::ECommand::Convert)
            throw CFailure(EExitStatus::Usage, "--all is an option of convert; see: tqc --help");
        if (m_options.outputFolder.empty() && m_options.format != SOptions::EFormat::Sqlite)
            throw CFailure(EExitStatus::Usage,
                           "--all writes a file for every sheet or table; give the folder for them: --out-dir DIR");
    }

    SOptions& m_options;
    CLI::App m_app{SCHelpText::description};
    CLI::Option* m_files = nullptr; ///< given without a command
    // If one of these is not given, --code-page or the locale applies.
    std::optional<unsigned> m_encodingPage;
    std::optional<unsigned> m_outputPage;
    std::optional<unsigned> m_jobs;
    bool m_isReplaceGiven = false;
};

} // namespace

std::optional<SOptions> SCCommandLine::Parse(int argc, const char* const* argv) {
    SOptions options;
    options.codePage = SCCodePageNames::OfLocale();
    CParser parser(options);
    if (!parser.Parse(argc, argv))
        return std::nullopt;
    return options;
}

} // namespace NSTQ::Tool
