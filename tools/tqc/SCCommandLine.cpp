#include "SCCommandLine.h"

#include "CFailure.h"
#include "CFixSourceReader.h"
#include "SCCodePageNames.h"
#include "platform/CodePage.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <iostream>
#include <span>
#include <string_view>

namespace NSTQ::Tool {
namespace {

constexpr const char* DESCRIPTION = "Reads a table from a file and writes it as CSV.";

constexpr const char* FOOTER = R"(Examples:
  tqc sales.tsv -o sales.csv         convert a file; sales.csv is replaced only when all went well
  tqc sales.txt | head               write to standard output
  tqc data.log --separator ';'       any text file whose separator you know
  tqc old.csv --encoding shift_jis --output-encoding utf-8
  tqc preview ledger.txt             the first rows of fixed-length text under a ruler
  tqc ledger.txt --widths 3,5,8      columns of 3, 5 and 8 bytes
  tqc list sales.xlsx                the sheets of a workbook with their rows and columns
  tqc sales.xlsx --sheet Q2          one of them; the first without --sheet
  tqc data.xtqf --password-file key  a package with a password
  tqc info sales.txt                 what the file is taken for

What is found out when it is not told:
  type       from the name's extension; for .txt and unknown ones from the first line: with a TAB tsv, with a comma csv
  line end   the first one outside quotes in the first 64000 bytes: CR LF or LF, CR when there is no LF
  encoding   UTF-8 when the file begins with its mark, else the code page
  code page  from LC_ALL, LC_CTYPE or LANG, utf-8 when these do not tell

UTF-8 is read as it stands, other text in the code page. The output is in the code page unless --output-encoding is
given. Characters that it does not have are replaced, with their rows reported, or with --strict end the conversion.

The password of a package, workbook or database comes from --password-file, --password-fd or the terminal, never from
the command line.

A row of --max-line-size bytes or more is left out, a field over --max-field-size and fields over --max-fields are cut
off; each such row is reported with its number, counted from 1 in the source.

Exit status: 0 done (also when the reader of a pipe went away), 1 some rows cut or left out, 2 usage, 3 not found or
denied, 4 password, 5 unsupported or damaged, 6 limit exceeded, 7 output failed.)";

template <class T>
struct SChoice {
    const char* name;
    T value;
};

constexpr SChoice<SCDeclareConstant::ESourceFileType> TYPES[] = {
    {"csv", SCDeclareConstant::SFT_CSV}, {"tsv", SCDeclareConstant::SFT_TXT}, {"fix", SCDeclareConstant::SFT_FIX}};
constexpr SChoice<SLineEnd> LINE_ENDS[] = {{"crlf", {SCDataAccessDefine::CR_CODE, SCDataAccessDefine::LF_CODE}},
                                           {"lf", {SCDataAccessDefine::LF_CODE, 0}},
                                           {"cr", {SCDataAccessDefine::CR_CODE, 0}}};
/// The parser puts the option's name before the message.
[[noreturn]] void Refuse(const char* option, const std::string& value, const std::string& allowed) {
    throw CLI::ValidationError(option, "\"" + value + "\" cannot be used; allowed: " + allowed);
}

template <class T>
T Choose(const char* option, const std::string& value, std::span<const SChoice<T>> choices) {
    std::string allowed;
    for (const SChoice<T>& choice : choices) {
        if (value == choice.name)
            return choice.value;
        allowed += (allowed.empty() ? "" : ", ") + std::string(choice.name);
    }
    Refuse(option, value, allowed);
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
        m_app.footer(FOOTER);
        m_app.add_option("FILE", m_options.strFile, "the file to read");
        Add("-o,--output", "OUT.csv", "the file to write; standard output without it",
            [this](const char* name, const auto& value) {
                if (value.empty())
                    Refuse(name, value, "a path, or - for standard output");
                m_options.strOutput = value;
            });
        AddSourceOptions();
        AddRowOptions();
        AddOutputOptions();
        m_pInfo = m_app.add_subcommand("info", "Shows a file's type, size, update time and character set.");
        m_pInfo->add_option("FILE", m_options.strFile, "the file to look at");
        m_pInfo->footer("--type, --separator, --eol, --encoding and --code-page have a say in it; see: tqc --help");
        m_pInfo->fallthrough();
        m_pPreview = m_app.add_subcommand("preview", "Shows a file's first rows; fixed-length text under a ruler.");
        m_pPreview->add_option("FILE", m_options.strFile, "the file to look at");
        m_pPreview->fallthrough();
        m_pList =
            m_app.add_subcommand("list", "Lists a workbook's sheets or a database's tables: name, rows, columns.");
        m_pList->add_option("FILE", m_options.strFile, "the file to look at");
        m_pList->fallthrough();
    }

    bool Parse(int argc, const char* const* argv) {
        try {
            m_app.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            if (error.get_exit_code() == 0) {
                m_app.exit(error);
                return false;
            }
            throw CFailure(ES_USAGE, std::string(error.what()) + "; see: tqc --help");
        }
        if (m_options.strFile.empty())
            throw CFailure(ES_USAGE, "no file given; see: tqc --help");
        if (m_pInfo->parsed())
            m_options.eCommand = SOptions::CMD_INFO;
        if (m_pList->parsed())
            m_options.eCommand = SOptions::CMD_LIST;
        if (m_pPreview->parsed())
            m_options.eCommand = SOptions::CMD_PREVIEW;
        CheckTogether();
        return true;
    }

private:
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
        Add("--type", "TYPE", "what the file is: csv, tsv or fix", [this](const char* name, const auto& value) {
            m_options.type = Choose<SCDeclareConstant::ESourceFileType>(name, value, TYPES);
        });
        Add("--separator", "CHAR", "the field separator: one character, \\t or tab",
            [this](const char* name, const auto& value) { m_options.separator = ParseSeparator(name, value); });
        Add("--eol", "EOL", "the line end of the file: crlf, lf or cr", [this](const char* name, const auto& value) {
            m_options.lineEnd = Choose<SLineEnd>(name, value, LINE_ENDS);
        });
        Add("--encoding", "SET", "of the text: auto, ansi (the code page), utf-8 or a page such as shift_jis",
            [this](const char* name, const auto& value) { TakeEncoding(name, value); });
        Add("--code-page", "PAGE", "the code page of texts: 932, 1252, 936, 949, 950, 65001, or a name like utf-8",
            [this](const char* name, const auto& value) {
                if (!m_bPageChosen)
                    m_options.uCodePage = ParsePage(name, value);
            });
        Add("--widths", "N,N,...", "the bytes of each column of fixed-length text",
            [this](const char* name, const auto& value) { TakeWidths(name, value); });
        m_app
            .add_option("--sheet", m_options.strSheet,
                        "the sheet or table: its name, or its number from 1 (the first)")
            ->type_name("NAME|N");
        m_app.add_flag("--header", m_options.bHeader, "write the names of a sheet's or table's columns first");
        m_app.add_option("--password-file", m_options.strPassWordFile, "the password is the first line of FILE")
            ->type_name("FILE");
        Add("--password-fd", "N", "the password is the first line read from descriptor N",
            [this](const char* name, const auto& value) {
                m_options.iPassWordDescriptor = ParseNumber<int>(name, value, 0, 1'000'000);
            });
        m_app.add_flag("--quote-newline", m_options.bQuoteNewLine, "a line end inside quotes does not end the row");
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
        m_options.uCodePage = *page;
        m_bPageChosen = true;
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
        const auto output = m_options.outputCodePage.value_or(m_options.uCodePage);
        if (m_options.bAddMark && output != Platform::CP_UTF8)
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
        AddNumber("--max-fields", m_options.dwMaxFields, "the most fields kept of a row");
        AddNumber("--max-line-size", m_options.dwMaxLineSize, "rows of that many bytes are left out");
        AddNumber("--max-field-size", m_options.dwMaxFieldSize, "the most bytes kept of a field");
        AddCount("--skip", m_options.ullSkip, "leave out the first N rows");
        AddCount("--limit", m_options.ullLimit, "stop after N rows");
    }

    void AddOutputOptions() {
        Add("--output-separator", "CHAR", "the separator to write (,)", [this](const char* name, const auto& value) {
            m_options.cOutputSeparator = ParseSeparator(name, value);
        });
        Add("--output-eol", "EOL", "the line end to write (crlf)", [this](const char* name, const auto& value) {
            m_options.outputLineEnd = Choose<SLineEnd>(name, value, LINE_ENDS);
        });
        Add("--output-encoding", "PAGE", "the encoding to write, such as utf-8 or shift_jis (the code page)",
            [this](const char* name, const auto& value) { m_options.outputCodePage = ParsePage(name, value); });
        m_app.add_flag("--strict", m_options.bStrict, "stop at a character that the output does not have");
        m_app.add_flag("--replace", m_bReplace, "replace such characters and report their rows (as without it)");
        m_app.add_flag("--add-bom", m_options.bAddMark, "write the mark EF BB BF before UTF-8 output");
        m_app.add_flag("--quiet", m_options.bQuiet, "only errors: no progress and no reports of rows");
    }

    SOptions& m_options;
    CLI::App m_app{DESCRIPTION};
    CLI::App* m_pInfo = nullptr;
    CLI::App* m_pPreview = nullptr;
    CLI::App* m_pList = nullptr;
    bool m_bPageChosen = false; ///< by --encoding, which goes before --code-page
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
