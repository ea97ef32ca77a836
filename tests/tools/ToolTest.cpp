#include "support/TempFolder.h"
#include "tools/CProgram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <array>
#include <chrono>
#include <set>
#include <thread>

namespace NSTQ::Tests {
namespace {

using namespace std::string_literals;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

const std::string MARK = "\xEF\xBB\xBF";
const std::string JAPANESE_UTF8 = "\xE8\xA1\xA8"; // its second byte in Shift_JIS is a backslash
const std::string JAPANESE_SJIS = "\x95\x5C";

class Tool : public testing::Test {
protected:
    SResult Run(std::vector<std::string> arguments, int output = -1, int errors = -1) {
        return CProgram(std::move(arguments), {m_folder.Path(), output, errors}).Finish();
    }
    /// Everything in the folder, hidden names included.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_folder.Path()))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
    mode_t Mode(std::string_view name) const {
        struct stat status {};
        ::stat(m_folder.Path(name).c_str(), &status);
        return status.st_mode & 07777;
    }
    std::string MakeBigFile() const {
        std::string rows;
        for (int i = 0; i < 300'000; ++i)
            rows += "12345,abcdef,\"quoted, text\"," + std::to_string(i) + "\n";
        m_folder.WriteFile("big.csv", rows);
        return rows;
    }

    CTempFolder m_folder;
};

struct SCase {
    const char* title;
    std::string name;
    std::string content;
    std::vector<std::string> options;
    std::string output;
    std::string errors; ///< a part of standard error; empty means that it is empty
    int status;
};

void PrintTo(const SCase& entry, std::ostream* stream) {
    *stream << entry.title;
}

class ToolTable : public testing::TestWithParam<SCase> {};

TEST_P(ToolTable, Converts) {
    const SCase& entry = GetParam();
    const CTempFolder folder;
    folder.WriteFile(entry.name, entry.content);
    std::vector<std::string> arguments{entry.name};
    arguments.insert(arguments.end(), entry.options.begin(), entry.options.end());
    const SResult result = CProgram(arguments, {folder.Path()}).Finish();
    EXPECT_EQ(result.output, entry.output);
    EXPECT_EQ(result.status, entry.status);
    if (entry.errors.empty())
        EXPECT_EQ(result.errors, "");
    else
        EXPECT_THAT(result.errors, AllOf(HasSubstr("tqc: "), HasSubstr(entry.errors)));
}

std::string NameCase(const testing::TestParamInfo<SCase>& info) {
    return info.param.title;
}

const SCase TYPES_AND_LINE_ENDS[] = {
    {"CrLf", "a.csv", "a,b\r\n1,\"x,y\"\r\n", {}, "a,b\r\n1,\"x,y\"\r\n", "", 0},
    {"Lf", "a.csv", "a,b\n1,2\n", {}, "a,b\r\n1,2\r\n", "", 0},
    {"Cr", "a.csv", "a,b\r1,2\r", {}, "a,b\r\n1,2\r\n", "", 0},
    {"NoLineEnd", "a.csv", "a,b", {}, "a,b\r\n", "", 0},
    {"EmptyRows", "a.csv", "a\n\n\nb\n\n", {}, "a\r\n\r\n\r\nb\r\n\r\n", "", 0},
    {"LfInQuotesIsNoLineEndOfTheFile", "a.csv", "\"a\"\"\nb\",c\r\nd\r\n", {}, "\"a\"\"b\",c\r\nd\r\n", "", 0},
    {"TextWithTabAndLf", "a.txt", "a,b\tc\n", {}, "\"a,b\",c\r\n", "", 0},
    {"TextWithTabAndCrLf", "a.txt", "a,b\tc\r\n", {}, "\"a,b\",c\r\n", "", 0},
    {"UnknownNameWithComma", "a.dat", "a,b\n", {}, "a,b\r\n", "", 0},
    {"NoExtension", "plain", "a\tb\n", {}, "a,b\r\n", "", 0},
    {"UnknownNameOneColumn", "a.dat", "abc\n", {}, "", "a.dat: unknown type", 5},
    {"TypeGiven", "a.dat", "abc\n", {"--type", "csv"}, "abc\r\n", "", 0},
    {"TypeOverridesPackageName", "a.xtqf", "a\tb\n", {"--type", "tsv"}, "a,b\r\n", "", 0},
    {"SeparatorGiven", "a.dat", "a;b\n", {"--separator", ";"}, "a,b\r\n", "", 0},
    {"SeparatorTab", "a.csv", "a\tb\n", {"--separator", "\\t"}, "a,b\r\n", "", 0},
    {"EolGiven", "a.csv", "a\rb\nc\n", {"--eol", "cr"}, "a\r\nbc\r\n", "", 0},
    {"Empty", "a.dat", "", {}, "", "", 0},
    {"TextWithoutSeparators", "a.txt", "abc  1\r\n", {}, "", "fixed-length", 5},
    {"Workbook", "a.xls", "x", {}, "", "a.xls: ", 5},
    {"Utf16", "a.csv", "\xFF\xFE"s + "a\0,\0"s, {}, "", "UTF-16", 5},
    {"QuotedLineEndEndsTheRow", "a.csv", "\"a\nb\",c\n", {}, "a\r\n\"b\"\"\",c\r\n", "", 0},
    {"QuotedLineEndKeptInRow", "a.csv", "\"a\nb\",c\n", {"--quote-newline"}, "ab,c\r\n", "", 0},
    {"OutputForm", "a.csv", "a,\"b;c\"\n", {"--output-separator", ";", "--output-eol", "lf"}, "a;\"b;c\"\n", "", 0},
    {"SkipAndLimit", "a.csv", "1\n2\n3\n4\n", {"--skip", "1", "--limit", "2"}, "2\r\n3\r\n", "", 0},
    {"SkipAll", "a.csv", "1\n2\n", {"--skip", "9"}, "", "", 0},
    {"LimitNone", "a.csv", "1\n2\n", {"--limit", "0"}, "", "", 0},
};
INSTANTIATE_TEST_SUITE_P(TypesAndLineEnds, ToolTable, testing::ValuesIn(TYPES_AND_LINE_ENDS), NameCase);

const SCase CODE_PAGES[] = {
    {"MarkSkippedSpacesKept", "a.csv", MARK + "\"New, York\",a b\n", {}, "\"New, York\",a b\r\n", "", 0},
    {"MarkAlone", "a.csv", MARK, {}, "", "", 0},
    {"MarkIsDataWhenAnsiIsAsked", "a.csv", MARK + "a\n", {"--encoding", "ansi"}, MARK + "a\r\n", "", 0},
    {"ShortFile", "a.csv", "a b", {}, "a b\r\n", "", 0},
    {"ShortShiftJis", "a.csv", JAPANESE_SJIS, {"--code-page", "932"}, JAPANESE_SJIS + "\r\n", "", 0},
    {"ShiftJisThrough", "a.csv", JAPANESE_SJIS + ",b\n", {"--code-page", "sjis"}, JAPANESE_SJIS + ",b\r\n", "", 0},
    {"Utf8ToShiftJis",
     "a.csv",
     MARK + JAPANESE_UTF8 + ",\xE2\x82\xAC\n",
     {"--code-page", "932"},
     JAPANESE_SJIS + ",?\r\n",
     "row 1: replaced: characters that 932 (shift_jis) does not have",
     1},
    {"Utf8WithoutMark",
     "a.csv",
     JAPANESE_UTF8 + "\n",
     {"--code-page", "932", "--encoding", "utf-8"},
     JAPANESE_SJIS + "\r\n",
     "",
     0},
    {"JapanesePathInUtf8", JAPANESE_UTF8 + ".csv", "a\n", {}, "a\r\n", "", 0},
    {"JapanesePathInShiftJis", JAPANESE_UTF8 + ".csv", "a\n", {"--code-page", "932"}, "a\r\n", "", 0},
    {"PathNotInCodePage", "\xC3\xA9.csv", "a\n", {"--code-page", "932"}, "", "try --code-page 65001", 2},
    {"PathWithBestFitOnly", "\xC2\xA5.csv", "a\n", {"--code-page", "932"}, "", "try --code-page 65001", 2},
    {"PathWithBackslash", "a\\b.csv", "a\n", {}, "", "taken for '/'", 2},
};
INSTANTIATE_TEST_SUITE_P(CodePages, ToolTable, testing::ValuesIn(CODE_PAGES), NameCase);

const SCase ROWS_CUT[] = {
    {"TooManyFields",
     "a.csv",
     "1,2\n1,2,3\n1\n",
     {"--max-fields", "2"},
     "1,2\r\n1,2\r\n1\r\n",
     "a.csv: row 2: more than 2 fields",
     1},
    {"TooManyFieldsInUtf8",
     "a.csv",
     MARK + "1,2\n1,2,3\n",
     {"--max-fields", "2", "--code-page", "932"},
     "1,2\r\n1,2\r\n",
     "row 2: more than 2 fields",
     1},
    {"FieldCutBeforeHalfCharacter",
     "a.csv",
     "abcd\nabc" + JAPANESE_UTF8 + ",z\n",
     {"--max-field-size", "5"},
     "abcd\r\nabc,z\r\n",
     "row 2: field 1 has 6 bytes",
     1},
    {"RowOverLimit",
     "a.csv",
     "abc\nabcdefghijklm,n\nxyz\n",
     {"--max-line-size", "4"},
     "abc\r\nxyz\r\n",
     "row 2: 4 bytes or more, left out",
     1},
    {"RowOverLimitAtTheEnd",
     "a.csv",
     "abc\nabcdefghijkl",
     {"--max-line-size", "4"},
     "abc\r\n",
     "row 2: 4 bytes or more, left out",
     1},
    {"RowOverLimitInUtf8",
     "a.csv",
     MARK + "abc\nabcdefghijklm,n\nxyz\n",
     {"--max-line-size", "4", "--code-page", "932"},
     "abc\r\nxyz\r\n",
     "row 2: 4 bytes or more, left out",
     1},
    {"RowAtLimitOnlyWhenConverted",
     "a.csv",
     MARK + "abc\nabcd\n\nxyz\n",
     {"--max-line-size", "4", "--code-page", "932"},
     "abc\r\n\r\nxyz\r\n",
     "row 2: 4 bytes or more, left out",
     1},
    {"RowOverGreatestLimit",
     "a.csv",
     "a\n" + std::string(70'000, 'x') + "\nb\n",
     {},
     "a\r\nb\r\n",
     "row 2: 65535 bytes or more, left out",
     1},
    {"WidestField", "a.csv", std::string(65'534, 'x') + "\nb\n", {}, std::string(65'534, 'x') + "\r\nb\r\n", "", 0},
    {"EofMarkCutsRow",
     "a.csv",
     "a,b,\x1A"
     "c\nd\n",
     {},
     "a,b\r\nc\r\nd\r\n",
     "row 1: ended by an end-of-file mark",
     1},
    {"EofMarkBeforeRow",
     "a.csv",
     "a\n\x1A"
     "b\n",
     {},
     "a\r\nb\r\n",
     "row 2: an end-of-file mark",
     1},
    {"EofMarkAtTheEnd", "a.csv", "a\n\x1A", {}, "a\r\n", "", 0},
    {"EofMarkAtTheEndOfUtf8", "a.csv", MARK + "a\n\x1A", {"--code-page", "932"}, "a\r\n", "", 0},
    {"Quiet", "a.csv", "1,2,3\n", {"--max-fields", "2", "--quiet"}, "1,2\r\n", "", 1},
    {"SkippedRowsAreNotReported", "a.csv", "1,2\n1\n", {"--max-fields", "1", "--skip", "1"}, "1\r\n", "", 0},
};
INSTANTIATE_TEST_SUITE_P(RowsCut, ToolTable, testing::ValuesIn(ROWS_CUT), NameCase);

TEST_F(Tool, ReportsTenRowsAndCountsTheOthers) {
    std::string rows;
    for (int i = 0; i < 25; ++i)
        rows += "1,2\n";
    m_folder.WriteFile("a.csv", rows);
    const SResult result = Run({"a.csv", "--max-fields", "1"});
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 11);
    EXPECT_THAT(result.errors, AllOf(HasSubstr("row 10:"), Not(HasSubstr("row 11:")), HasSubstr("15 more rows")));
}

TEST_F(Tool, RefusesWhatItCannotUse) {
    m_folder.WriteFile("a.csv", "a\n");
    m_folder.WriteFile("readonly.csv", "old");
    m_folder.MakeFolder("folder.csv");
    ::mkfifo(m_folder.Path("pipe.csv").c_str(), 0600);
    ::chmod(m_folder.Path("readonly.csv").c_str(), 0444);
    std::string deep = "./";
    while (deep.size() < 260)
        deep += "./";
    const struct {
        std::vector<std::string> arguments;
        int status;
        const char* message;
    } cases[] = {
        {{}, 2, "no file given"},
        {{"a.csv", "--bogus"}, 2, "--bogus"},
        {{"a.csv", "--type", "json"}, 2, "csv, tsv, fix, xls, xlsx, mdb, accdb, xtqf"},
        {{"a.csv", "--eol", "x"}, 2, "crlf, lf, cr"},
        {{"a.csv", "--encoding", "utf-16"}, 2, "auto, ansi, 932 (shift_jis)"},
        {{"a.csv", "--code-page", "1251"}, 2, "932 (shift_jis)"},
        {{"a.csv", "--separator", "ab"}, 2, "one ASCII character"},
        {{"a.csv", "--separator", "\""}, 2, "one ASCII character"},
        {{"a.csv", "--max-fields", "0"}, 2, "1 to 65535"},
        {{"a.csv", "--max-line-size", "65536"}, 2, "1 to 65535"},
        {{"a.csv", "--max-field-size", "12x"}, 2, "1 to 65535"},
        {{"a.csv", "--skip", "-1"}, 2, "0 to 18446744073709551615"},
        {{"missing.csv"}, 3, "missing.csv: No such file"},
        {{"info", "missing.csv"}, 3, "missing.csv: No such file"},
        {{"folder.csv"}, 3, "a folder"},
        {{"pipe.csv"}, 5, "a pipe or a device"},
        {{deep + "a.csv"}, 6, "260 bytes"},
        {{"a.csv", "--output="}, 2, "--output"},
        {{"a.csv", "-o", "folder.csv"}, 7, "a folder"},
        {{"a.csv", "-o", "nowhere/b.csv"}, 7, "nowhere/b.csv"},
        {{"a.csv", "-o", "readonly.csv"}, 7, "may not be written"},
    };
    const auto before = Names();
    for (const auto& entry : cases) {
        SCOPED_TRACE(testing::PrintToString(entry.arguments));
        const SResult result = Run(entry.arguments);
        EXPECT_EQ(result.status, entry.status);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, AllOf(testing::StartsWith("tqc: "), HasSubstr(entry.message)));
        EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1);
    }
    EXPECT_EQ(Names(), before);
    EXPECT_EQ(m_folder.ReadFile("readonly.csv"), "old");
}

TEST_F(Tool, InfoTellsWhatTheSamplesAre) {
    const std::string samples = TQC_SAMPLES "/";
    const struct {
        const char* file;
        std::vector<std::string> options;
        const char* type;
        const char* characterSet;
        const char* lineEnd;
    } cases[] = {
        {"prices-sjis.csv", {}, "comma-separated", "not UTF-8", "CR LF"},
        {"prices-sjis.csv", {"--code-page", "932"}, "comma-separated", "932 (shift_jis)", "CR LF"},
        {"prices-utf8.csv", {"--code-page", "932"}, "comma-separated", "UTF-8 (with a mark)", "CR LF"},
        {"stock.tsv", {}, "tab-separated", "UTF-8\n", "LF"},
        {"ledger.txt", {}, "fixed-length", "UTF-8\n", "CR LF"},
    };
    for (const auto& entry : cases) {
        SCOPED_TRACE(entry.file);
        std::vector<std::string> arguments{"info", samples + entry.file};
        arguments.insert(arguments.end(), entry.options.begin(), entry.options.end());
        const SResult result = Run(arguments);
        EXPECT_EQ(result.status, 0);
        EXPECT_THAT(result.output,
                    AllOf(HasSubstr("Type:          "s + entry.type), HasSubstr("Character set: "s),
                          HasSubstr(entry.characterSet), HasSubstr("Line end:      "s + entry.lineEnd + "\n"),
                          HasSubstr("Size:          " +
                                    std::to_string(std::filesystem::file_size(samples + entry.file)) + " bytes"),
                          testing::ContainsRegex("Updated:       20[0-9-]+ [0-9:]+ [+-][0-9]+")));
    }
}

TEST_F(Tool, CodePageComesFromTheLocale) {
    m_folder.WriteFile("a.csv", MARK + JAPANESE_UTF8 + "\n");
    const std::pair<const char*, std::string> cases[] = {{"ja_JP.SJIS", JAPANESE_SJIS},
                                                         {"ja_JP.UTF-8@x", JAPANESE_UTF8},
                                                         {"C", JAPANESE_UTF8},
                                                         {"ja_JP.eucJP", JAPANESE_UTF8}};
    for (const auto& [locale, expected] : cases)
        EXPECT_EQ(CProgram({"a.csv"}, {m_folder.Path(), -1, -1, locale}).Finish().output, expected + "\r\n")
            << locale;
}

TEST_F(Tool, ReplacesTheTargetInOneStep) {
    m_folder.WriteFile("a.csv", "a\n");
    ASSERT_EQ(Run({"a.csv", "-o", "new.csv"}).status, 0);
    EXPECT_EQ(m_folder.ReadFile("new.csv"), "a\r\n");

    m_folder.WriteFile("old.csv", "something longer that was there before");
    ::chmod(m_folder.Path("old.csv").c_str(), 0640);
    std::filesystem::create_symlink("old.csv", m_folder.Path("link.csv"));
    ASSERT_EQ(Run({"a.csv", "-o", "link.csv"}).status, 0);
    EXPECT_EQ(m_folder.ReadFile("old.csv"), "a\r\n");
    EXPECT_EQ(Mode("old.csv"), 0640U);
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder.Path("link.csv")));

    std::filesystem::create_symlink("fresh.csv", m_folder.Path("dangling.csv"));
    ASSERT_EQ(Run({"a.csv", "-o", "dangling.csv"}).status, 0);
    EXPECT_EQ(m_folder.ReadFile("fresh.csv"), "a\r\n");

    ASSERT_EQ(Run({"a.csv", "-o", "a.csv"}).status, 0);
    EXPECT_EQ(m_folder.ReadFile("a.csv"), "a\r\n");
    ASSERT_EQ(Run({"a.csv", "-o", std::string(250, 'n')}).status, 0);
    EXPECT_EQ(Names(), (std::vector<std::string>{"a.csv", "dangling.csv", "fresh.csv", "link.csv", "new.csv",
                                                 std::string(250, 'n'), "old.csv"}));
}

TEST_F(Tool, AppendsToStandardOutputAndRefusesItsOwnSource) {
    m_folder.WriteFile("a.csv", "a\n");
    m_folder.WriteFile("log.csv", "kept\n");
    for (const char* name : {"log.csv", "a.csv"}) {
        const int file = ::open(m_folder.Path(name).c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
        EXPECT_EQ(Run({"a.csv"}, file).status, name == "log.csv"s ? 0 : 2);
        ::close(file);
    }
    EXPECT_EQ(m_folder.ReadFile("log.csv"), "kept\na\r\n");
    EXPECT_EQ(m_folder.ReadFile("a.csv"), "a\n");
}

TEST_F(Tool, SaysWhenTheDeviceIsFull) {
    MakeBigFile();
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    for (const SResult& result : {Run({"big.csv"}, full), Run({"big.csv", "-o", "/dev/full"}), Run({"--help"}, full),
                                  Run({"info", "big.csv", "--json"}, full)}) {
        EXPECT_EQ(result.status, 7);
        EXPECT_THAT(result.errors, testing::ContainsRegex("[Nn]o space left"));
    }
    ::close(full);
}

TEST_F(Tool, EndsQuietlyWhenTheReaderGoesAway) {
    MakeBigFile();
    CProgram program({"big.csv"}, {m_folder.Path()});
    EXPECT_THAT(program.ReadSome(), testing::StartsWith("12345,abcdef"));
    program.CloseOutput();
    const SResult result = program.Finish();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
}

TEST_F(Tool, WritesToANamedPipe) {
    m_folder.WriteFile("a.csv", "a\n");
    const std::string pipe = m_folder.Path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    std::string received;
    std::thread reader([&] {
        std::ifstream stream(pipe);
        received.assign(std::istreambuf_iterator<char>(stream), {});
    });
    const SResult result = Run({"a.csv", "-o", "pipe"});
    reader.join();
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(received, "a\r\n");
}

/// From before it has started until after it is done; with standard input, whose copy goes as well.
TEST_F(Tool, KilledAtAnyMomentItLeavesTheOldFileOrTheNewOne) {
    std::string rows;
    for (int i = 0; i < 40'000; ++i)
        rows += "12345,abcdef," + std::to_string(i) + "\r\n";
    m_folder.WriteFile("in.csv", rows);
    ::setenv("TMPDIR", m_folder.MakeFolder("tmp").c_str(), 1);
    const std::vector<std::string> arguments{"in.csv", "-", "--type", "csv", "-o", "out.csv", "--rejects", "bad.csv"};
    const auto start = [&] {
        const int input = ::open(m_folder.Path("in.csv").c_str(), O_RDONLY | O_CLOEXEC);
        auto program =
            std::make_unique<CProgram>(arguments, CProgram::SSetting{m_folder.Path(), -1, -1, "C.UTF-8", input});
        ::close(input);
        return program;
    };
    const auto began = std::chrono::steady_clock::now();
    ASSERT_EQ(start()->Finish().status, 0);
    const auto whole = std::chrono::steady_clock::now() - began;
    std::set<std::string> seen;
    constexpr int moments = 120;
    for (int moment = 0; moment < moments; ++moment) {
        const int signal = std::array{SIGINT, SIGTERM, SIGHUP, SIGKILL}[static_cast<std::size_t>(moment % 4)];
        const bool isThere = moment % 3 != 0;
        std::filesystem::remove(m_folder.Path("out.csv"));
        if (isThere)
            m_folder.WriteFile("out.csv", "old");
        const auto program = start();
        std::this_thread::sleep_for(whole * 2 * moment / moments);
        program->Signal(signal);
        program->Finish();
        const std::string content = m_folder.Exists("out.csv") ? m_folder.ReadFile("out.csv") : "";
        EXPECT_TRUE(content == (isThere ? "old" : "") || content == rows + rows) << content.size();
        seen.insert(content.size() > 3 ? "new" : "old");
        EXPECT_TRUE(std::filesystem::is_empty(m_folder.Path("tmp"))) << signal;
        for (const std::string& name : Names())
            EXPECT_TRUE(name == "in.csv" || name == "out.csv" || name == "bad.csv" || name == "tmp")
                << name << " after " << signal;
    }
    ::unsetenv("TMPDIR");
    EXPECT_EQ(seen.size(), 2U) << "the moments do not span the whole run";
}

TEST_F(Tool, NoticesThatTheSourceBecameShorter) {
    const std::string rows = MakeBigFile();
    CProgram program({"big.csv"}, {m_folder.Path()});
    program.ReadSome();
    // The program waits for the pipe to be emptied.
    std::filesystem::resize_file(m_folder.Path("big.csv"), rows.size() / 2);
    const SResult result = program.Finish();
    EXPECT_EQ(result.status, 5);
    EXPECT_THAT(result.errors, HasSubstr("became shorter"));
}

TEST_F(Tool, ShowsProgressOnATerminalOnly) {
    MakeBigFile();
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_TRUE(master >= 0 && ::grantpt(master) == 0 && ::unlockpt(master) == 0);
    const int terminal = ::open(::ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const auto shown = [&](std::vector<std::string> arguments) {
        const bool isThere = arguments[0] == "big.csv";
        EXPECT_EQ(Run(std::move(arguments), -1, terminal).status, isThere ? 0 : 3);
        EXPECT_EQ(::write(terminal, "~", 1), 1);
        std::string text;
        for (char c = 0; !text.ends_with('~') && ::read(master, &c, 1) == 1;)
            text += c;
        return text;
    };
    EXPECT_THAT(shown({"big.csv", "-o", "out.csv"}),
                AllOf(HasSubstr("\r["), HasSubstr(" %"), testing::EndsWith("\r\033[K~")));
    EXPECT_EQ(shown({"big.csv", "-o", "out.csv", "--quiet"}), "~");
    EXPECT_THAT(shown({"nothing.csv"}), HasSubstr("\033[1;31mtqc:\033[0m nothing.csv: "));
    ::setenv("NO_COLOR", "1", 1);
    EXPECT_THAT(shown({"nothing.csv"}), testing::StartsWith("tqc: nothing.csv: "));
    ::unsetenv("NO_COLOR");
    ::close(terminal);
    ::close(master);
}

} // namespace
} // namespace NSTQ::Tests
