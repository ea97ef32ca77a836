// tqc on fixed-length text and packages, and between encodings.
#include "support/TempFolder.h"
#include "support/ZipWriter.h"
#include "tools/CProgram.h"
#include "xlsx/XlsxBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/ioctl.h>
#include <termios.h>

#include <array>
#include <chrono>
#include <pty.h>
#include <thread>
#include <utmp.h>

namespace NSTQ::Tests {
namespace {

using testing::HasSubstr;

const std::string MARK = "\xEF\xBB\xBF";
const std::string UTF8 = "\xE8\xA1\xA8,\"a b\",1\r\n"; // 表, whose second byte in Shift_JIS is a backslash
const std::string SJIS = "\x95\x5C,\"a b\",1\r\n";

std::string Repeat(const std::string& text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i)
        result += text;
    return result;
}

class Convert : public testing::Test {
protected:
    void SetUp() override { ::setenv("TMPDIR", m_folder.MakeFolder("tmp").c_str(), 1); }
    void TearDown() override {
        ::unsetenv("TMPDIR");
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder.Path("tmp")))
            EXPECT_TRUE(entry.is_directory() && entry.path().filename().string().find("TQD") == std::string::npos)
                << entry.path();
    }
    SResult Run(const std::vector<std::string>& arguments) { return CProgram(arguments, {m_folder.Path()}).Finish(); }
    std::string Package(const std::string& content) {
        return m_folder.WriteFile("a.xtqf", MakeZip({{.name = "TqData\\SourceFile.csv", .content = content}}));
    }

    CTempFolder m_folder;
};

TEST_F(Convert, BetweenEncodings) {
    const struct {
        const char* title;
        std::string content;
        std::vector<std::string> options;
        std::string output;
        const char* errors; ///< a part of standard error; none expected when empty
        int status;
    } cases[] = {
        {"to UTF-8",
         SJIS,
         {"--encoding", "shift_jis", "--output-encoding", "utf-8"},
         UTF8.substr(0, 3) + ",a b,1\r\n",
         "",
         0},
        {"to Shift_JIS", MARK + UTF8, {"--output-encoding", "932"}, SJIS.substr(0, 2) + ",a b,1\r\n", "", 0},
        {"UTF-8 without a mark",
         UTF8,
         {"--encoding", "utf-8", "--output-encoding", "sjis"},
         SJIS.substr(0, 2) + ",a b,1\r\n",
         "",
         0},
        {"the same encoding", SJIS, {"--encoding", "932"}, SJIS.substr(0, 2) + ",a b,1\r\n", "", 0},
        {"to another page",
         "\xE8,\xFF\n",
         {"--encoding", "1252", "--output-encoding", "utf-8"},
         "\xC3\xA8,\xC3\xBF\r\n",
         "",
         0},
        {"with a mark", "a\n", {"--add-bom"}, MARK + "a\r\n", "", 0},
        {"no form",
         "a,\xC3\xA9\xE2\x82\xAC\nb\n",
         {"--output-encoding", "932"},
         "a,e?\r\nb\r\n",
         "row 1: replaced",
         1},
        {"a best fit counts as lost",
         "\xC2\xA5\n",
         {"--type", "csv", "--output-encoding", "932"},
         "\\\r\n",
         "row 1: replaced",
         1},
        {"no characters in the source",
         "a,\x81\x20\xFFz\n",
         {"--encoding", "932", "--output-encoding", "utf-8"},
         "",
         "no character",
         1},
        {"strict",
         "a\n\xE2\x82\xAC\n",
         {"--type", "csv", "--output-encoding", "932", "--strict"},
         "",
         "row 2: characters",
         5},
        {"another code of a character is no loss",
         "\x87\x90?,1\n",
         {"--encoding", "932", "--output-encoding", "utf-8"},
         "\xE2\x89\x92?,1\r\n",
         "",
         0},
        {"a field too long in the output ends with a whole character",
         std::string(40'001, '\xD7') + "\n",
         {"--encoding", "1252", "--output-encoding", "932"},
         Repeat("\x81\x7E", 32'767) + "\r\n",
         "more than 65535 bytes",
         1},
        {"a middle dot is no loss",
         "\x81\x45,1\n",
         {"--encoding", "932", "--output-encoding", "utf-8"},
         "\xE3\x83\xBB,1\r\n",
         "",
         0},
        {"a mark needs UTF-8", "a\n", {"--add-bom", "--output-encoding", "932"}, "", "--output-encoding utf-8", 2},
        {"widths for delimited text", "a\n", {"--widths", "1", "--type", "csv"}, "", "--type fix", 2},
        {"a width of 0", "a\n", {"--widths", "3,0"}, "", "1 to 65535", 2},
        {"no width", "a\n", {"--widths", "3,"}, "", "1 to 65535", 2},
        {"widths over the limit", "a\n", {"--widths", "65000,600"}, "", "at most 65534; these come to 65602", 2},
        {"a name that is not in the page",
         "a\n",
         {"\xE8\xA1\xA8.csv", "--encoding", "1252"},
         "",
         "a link with another name",
         2},
    };
    for (const auto& c : cases) {
        m_folder.WriteFile("a.csv", c.content);
        std::vector<std::string> arguments = c.options;
        if (arguments.empty() || arguments[0].starts_with("--"))
            arguments.insert(arguments.begin(), "a.csv");
        else
            m_folder.WriteFile(arguments[0], c.content);
        const SResult result = Run(arguments);
        EXPECT_EQ(result.status, c.status) << c.title << ": " << result.errors;
        if (c.status == 0 || !c.output.empty()) {
            EXPECT_EQ(result.output, c.output) << c.title;
        }
        EXPECT_THAT(result.errors, HasSubstr(c.errors)) << c.title;
        EXPECT_EQ(result.errors.empty(), *c.errors == '\0') << c.title << ": " << result.errors;
    }
}

TEST_F(Convert, EverySampleToUtf8AndBack) {
    const std::filesystem::path samples = TQC_SAMPLES;
    const struct {
        std::vector<std::string> arguments;
        std::string like; ///< the sample whose content, in Shift_JIS, comes back
    } cases[] = {
        {{"prices-sjis.csv", "--encoding", "932"}, "prices-sjis.csv"},
        {{"prices-utf8.csv"}, "prices-sjis.csv"},
        {{"prices-locked.xtqf", "--password-file", m_folder.WriteFile("key", "secret\n"), "--encoding", "932"},
         "prices-sjis.csv"},
        {{"stock.tsv"}, ""},
        {{"prices.xlsx"}, "prices-sjis.csv"},
        {{"prices.xls"}, "prices-sjis.csv"},
        {{"ledger.txt", "--widths", "6,20,10"}, ""},
    };
    for (auto c : cases) {
        SCOPED_TRACE(c.arguments[0]);
        c.arguments[0] = samples / c.arguments[0];
        for (const char* option : {"--output-encoding", "utf-8", "--add-bom", "-o"})
            c.arguments.emplace_back(option);
        c.arguments.push_back(m_folder.Path("utf8.csv"));
        ASSERT_EQ(Run(c.arguments).errors, "");
        const SResult back = Run({"utf8.csv", "--output-encoding", "shift_jis"});
        EXPECT_EQ(back.errors, "");
        ASSERT_EQ(Run({"utf8.csv", "--output-encoding", "utf-8", "--add-bom"}).output, m_folder.ReadFile("utf8.csv"));
        if (c.like.empty())
            continue;
        std::ifstream sample(samples / c.like, std::ios::binary);
        EXPECT_EQ(back.output, std::string(std::istreambuf_iterator<char>(sample), {}));
    }
}

TEST_F(Convert, FixedLengthText) {
    const struct {
        const char* title;
        const char* name;
        std::string content;
        std::vector<std::string> options;
        std::string output;
        const char* errors;
        int status;
    } cases[] = {
        {"CR LF", "a.txt", "ab1\r\n c 2  \r\n", {"--widths", "2,2"}, "ab,1\r\nc,2\r\n", "", 0},
        {"text behind the columns",
         "a.txt",
         "ab1\ncd22\n",
         {"--widths", "2,1"},
         "ab,1\r\ncd,2\r\n",
         "row 2: text",
         1},
        {"a line longer than any row",
         "a.txt",
         "ab1\ncd2" + std::string(70'000, ' ') + "x\nef3\n",
         {"--widths", "2,1"},
         "ab,1\r\ncd,2\r\nef,3\r\n",
         "row 2: text behind",
         1},
        {"first line over 12288 bytes",
         "a.txt",
         Repeat(std::string(13'000, 'x') + "\n", 2),
         {"--widths", "13000"},
         Repeat(std::string(13'000, 'x') + "\r\n", 2),
         "",
         0},
        {"a mark inside a row",
         "a.txt",
         "ab\x1A"
         "cd2\n",
         {"--widths", "2,1"},
         "ab,\r\ncd,2\r\n",
         "row 1: ended by an end-of-file mark",
         1},
        {"a mark before a row", "a.txt", "\x1A\n", {"--widths", "2"}, "\r\n", "row 1: an end-of-file mark", 1},
        {"the columns take the limit", "a.dat", "ab\n", {"--widths", "65533"}, "ab\r\n", "", 0},
        {"a mark of UTF-8", "a.txt", MARK + "ab1\n", {"--widths", "2,1"}, "ab,1\r\n", "", 0},
        {"LF", "a.txt", "ab1\ncd2\n", {"--widths", "2,1"}, "ab,1\r\ncd,2\r\n", "", 0},
        {"another extension", "a.dat", "ab1,\ncd2\t\n", {"--widths", "2,2"}, "ab,\"1,\"\r\ncd,2 \r\n", "", 0},
        {"without line ends", "a.txt", "ab1cd2", {"--widths", "2,1"}, "ab,1\r\ncd,2\r\n", "", 0},
        {"an end-of-file mark", "a.txt", "ab1\r\n\x1A", {"--widths", "2,1"}, "ab,1\r\n", "", 0},
        {"cut fields", "a.txt", "abc1\n", {"--widths", "3,1", "--max-field-size", "2"}, "ab,1\r\n", "field 1", 1},
        {"too wide", "a.txt", "abc1\n", {"--widths", "6,5", "--max-line-size", "10"}, "", "--max-line-size", 6},
        {"no widths", "a.txt", "abc1\n", {}, "", "tqc preview a.txt", 5},
    };
    for (const auto& c : cases) {
        m_folder.WriteFile(c.name, c.content);
        std::vector<std::string> arguments{c.name};
        arguments.insert(arguments.end(), c.options.begin(), c.options.end());
        const SResult result = Run(arguments);
        EXPECT_EQ(result.status, c.status) << c.title << ": " << result.errors;
        EXPECT_EQ(result.output, c.output) << c.title;
        EXPECT_THAT(result.errors, HasSubstr(c.errors)) << c.title;
    }
}

TEST_F(Convert, PreviewShowsTheFirstRows) {
    m_folder.WriteFile("a.txt", "0123456789ab\r\nc\td\r\n\r\nnot shown\r\n");
    EXPECT_EQ(Run({"preview", "a.txt"}).output, "        10\n123456789012\n0123456789ab\nc.d\n\n");
    m_folder.WriteFile("a.dat", MARK + "\xE8\xA1\xA8\x1B[\x7F\xC2\x9B|\n");
    EXPECT_EQ(Run({"preview", "a.dat"}).output, "123456789\n\xE8\xA1\xA8 .[.. |\n");
    m_folder.WriteFile("a.csv", "a,\"b,c\"\n1,2\n3\n4\n");
    EXPECT_EQ(Run({"preview", "a.csv"}).output, "a | b,c\n1 | 2\n3\n");
    Package(SJIS);
    EXPECT_EQ(Run({"preview", "a.xtqf", "--encoding", "932", "--output-encoding", "utf-8"}).output,
              UTF8.substr(0, 3) + " | a b | 1\n");
}

TEST_F(Convert, PackagesConvertLikeAnySource) {
    Package(MARK + UTF8);
    EXPECT_EQ(Run({"a.xtqf"}).output, UTF8.substr(0, 3) + ",a b,1\r\n");
    // Neither page of the data is that of the temporary folder's path, in one of which it cannot even be written.
    for (const char* name : {"tmp/\xE8\xA1\xA8", "tmp/\xC3\xA9"}) {
        ::setenv("TMPDIR", m_folder.MakeFolder(name).c_str(), 1);
        const SResult result = Run({"a.xtqf", "--code-page", "932"});
        EXPECT_EQ(result.output, SJIS.substr(0, 2) + ",a b,1\r\n") << result.errors;
    }
    ::setenv("TMPDIR", m_folder.Path("tmp").c_str(), 1);
    EXPECT_THAT(Run({"info", "a.xtqf"}).output,
                testing::AllOf(HasSubstr("Data file:     16 bytes"), HasSubstr("UTF-8 (with a mark)")));
    EXPECT_THAT(Run({"info", TQC_SAMPLES "/prices-locked.xtqf"}).output, HasSubstr("needs a password"));
    m_folder.WriteFile("a.xtqf", "no archive");
    const SResult damaged = Run({"a.xtqf", "--password-file", m_folder.WriteFile("key", "x")});
    EXPECT_EQ(damaged.status, 4);
    EXPECT_THAT(damaged.errors, HasSubstr("a.xtqf: cannot be unpacked"));
    EXPECT_EQ(Run({"a.xtqf", "--password-file", "missing"}).status, 3);
    m_folder.WriteFile("a.xtqf", MakeZip({{.name = "other", .content = "x"}}));
    EXPECT_EQ(Run({"a.xtqf"}).status, 3);
}

TEST_F(Convert, WorkbooksListAndConvert) {
    SXlsxParts parts;
    parts.strRows =
        "<row><c><v>1</v></c><c t='inlineStr'><is><t>\xE8\xA1\xA8</t></is></c></row><row><c><v>2.5</v></c></row>";
    parts.sheetNames = {"It's a.b!c", "\xE6\x97\xA5\xE6\x9C\xAC \xE8\xAA\x9E", "2"};
    m_folder.WriteFile("a.xlsx", parts.File());
    const std::string rows = "1,\xE8\xA1\xA8\r\n2.5,\r\n";
    const struct {
        std::vector<std::string> arguments;
        std::string output;
        const char* errors;
        int status;
    } cases[] = {
        {{"list", "a.xlsx"},
         "name\trows\tcolumns\nIt's a.b!c\t2\t2\n" + parts.sheetNames[1] + "\t2\t2\n2\t2\t2\n",
         "",
         0},
        {{"a.xlsx"}, rows, "", 0},
        {{"a.xlsx", "--sheet", "It's a.b!c"}, rows, "", 0},
        {{"a.xlsx", "--sheet", parts.sheetNames[1], "--header"}, "F1,F2\r\n" + rows, "", 0},
        {{"a.xlsx", "--sheet", "3", "--skip", "1"}, "2.5,\r\n", "", 0},
        {{"a.xlsx", "--code-page", "932", "--limit", "1"}, "1,\x95\x5C\r\n", "", 0},
        {{"a.xlsx", "--max-fields", "1"}, "1\r\n2.5\r\n", "row 1: more than 1 fields", 1},
        {{"preview", "a.xlsx"}, "1 | \xE8\xA1\xA8\n2.5 | \n", "", 0},
        {{"a.xlsx", "--sheet", "Q5"}, "", "a.xlsx: no sheet \"Q5\"; sheets: It's a.b!c, ", 3},
        {{"list", "a.csv"}, "", "list is for workbooks and databases", 2},
        {{"a.csv", "--sheet", "1"}, "", "--sheet is for workbooks and databases", 2},
        {{"b.xlsx"}, "", "b.xlsx: ", 5},
        {{"c.xlsx", "--header"}, "", "c.xlsx: the sheet or table cannot be opened (80040E57): a row is too long", 6},
        {{"list", "c.xlsx", "--header"}, "", "c.xlsx: its \"Sheet1\" cannot be opened", 6},
    };
    m_folder.WriteFile("a.csv", "a,b\n");
    m_folder.WriteFile("b.xlsx", "no workbook");
    SXlsxParts tooLong;
    tooLong.strRows = "<row>" + Repeat("<c t='str'><v>" + Repeat("x", 1'000'000) + "</v></c>", 5) + "</row>";
    m_folder.WriteFile("c.xlsx", tooLong.File());
    for (const auto& c : cases) {
        const SResult result = Run(c.arguments);
        const std::string title = testing::PrintToString(c.arguments);
        EXPECT_EQ(result.status, c.status) << title << result.errors;
        EXPECT_EQ(result.output, c.output) << title;
        EXPECT_THAT(result.errors, HasSubstr(c.errors)) << title;
    }
}

/// Only packages need a temporary folder.
TEST_F(Convert, FixedLengthTextNeedsNoTemporaryFolder) {
    ::setenv("TMPDIR", m_folder.Path("missing").c_str(), 1);
    m_folder.WriteFile("a.dat", "ab1\n");
    EXPECT_EQ(Run({"a.dat", "--widths", "2,1"}).output, "ab,1\r\n");
}

/// The temporary folder is looked at when the test ends.
TEST_F(Convert, ASignalLeavesNoUnpackedFolder) {
    std::string rows;
    for (int i = 0; i < 60'000; ++i)
        rows += "a,b," + std::to_string(i) + "\n";
    Package(rows);
    CProgram program({"a.xtqf"}, {m_folder.Path()});
    program.ReadSome();
    program.Signal(SIGTERM);
    EXPECT_EQ(program.Finish().status, -SIGTERM);
}

#if defined(TQC_WITH_ENCRYPTION)
constexpr std::array LOCKED_SAMPLES = {"xtqf", "xlsx"};
#else
constexpr std::array LOCKED_SAMPLES = {"xtqf"};
#endif

/// tqc with a pseudo-terminal of its own, which is kept open to see what state it is left in.
class CTerminalRun {
public:
    CTerminalRun(const std::string& source, const std::string& output) : m_strPrompt(source + ": ") {
        int terminal = -1;
        if (::openpty(&m_iMaster, &terminal, nullptr, nullptr, nullptr) != 0)
            throw std::runtime_error("no pseudo-terminal");
        m_iChild = ::fork();
        if (m_iChild == 0) {
            ::login_tty(terminal);
            ::execl(TQC_PROGRAM, "tqc", source.c_str(), "--encoding", "932", "-o", output.c_str(), nullptr);
            ::_exit(127);
        }
        m_iTerminal = terminal;
    }
    CTerminalRun(const CTerminalRun&) = delete;
    CTerminalRun& operator=(const CTerminalRun&) = delete;
    ~CTerminalRun() {
        ::close(m_iMaster);
        ::close(m_iTerminal);
    }

    /// Waits for the prompt, which comes with the echo off, and types.
    void Answer(const std::string& text) {
        char c = 0;
        for (std::string line; !line.ends_with(m_strPrompt) && ::read(m_iMaster, &c, 1) == 1;) {
            line += c;
            m_strShown += c;
        }
        EXPECT_FALSE(IsEchoing());
        EXPECT_EQ(::write(m_iMaster, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    /// The wait status of the program.
    int Finish() {
        int status = 0;
        ::waitpid(m_iChild, &status, 0);
        char bytes[4096];
        ::fcntl(m_iMaster, F_SETFL, O_NONBLOCK);
        const ssize_t got = ::read(m_iMaster, bytes, sizeof bytes);
        m_strShown.append(bytes, got < 0 ? 0 : static_cast<std::size_t>(got));
        EXPECT_TRUE(IsEchoing());
        return status;
    }
    const std::string& Shown() const { return m_strShown; }

private:
    bool IsEchoing() const {
        termios settings{};
        return ::tcgetattr(m_iTerminal, &settings) == 0 && (settings.c_lflag & ECHO) != 0;
    }

    int m_iMaster = -1;
    int m_iTerminal = -1;
    pid_t m_iChild = -1;
    std::string m_strPrompt;
    std::string m_strShown;
};

TEST_F(Convert, AsksForThePasswordWithoutShowingIt) {
    for (const std::string source : LOCKED_SAMPLES) {
        CTerminalRun run(TQC_SAMPLES "/prices-locked." + source, m_folder.Path(source + ".csv"));
        run.Answer("wrong\n");
        run.Answer("secret\n");
        const int status = run.Finish();
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << run.Shown();
        EXPECT_THAT(run.Shown(), testing::Not(HasSubstr("secret")));
        EXPECT_GT(m_folder.ReadFile(source + ".csv").size(), 50U);
    }
    // What no password would help is not asked for one.
    CTerminalRun damaged(m_folder.WriteFile("a.xlsx", "PK\3\4"), m_folder.Path("out.csv"));
    const int status = damaged.Finish();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 5) << damaged.Shown();
}

TEST_F(Convert, LockedWorkbooksOpenWithTheirPassword) {
    const std::string key = m_folder.WriteFile("key", "secret\n");
    const std::string wrong = m_folder.WriteFile("wrong", "Secret\n");
    for (const std::string source : LOCKED_SAMPLES) {
        if (source == "xtqf")
            continue;
        const std::string path = std::string(TQC_SAMPLES "/prices-locked.") + source;
        EXPECT_THAT(Run({path, "--password-file", key}).output, HasSubstr("\xE5\x90\x8D\xE5\x8F\xA4\xE5\xB1\x8B"));
        const SResult missing = Run({path});
        EXPECT_EQ(missing.status, 4) << source;
        EXPECT_THAT(missing.errors, HasSubstr("encrypted; it needs a password; give it with --password-file"));
        const SResult refused = Run({"list", path, "--password-file", wrong});
        EXPECT_EQ(refused.status, 4) << source;
        EXPECT_THAT(refused.errors, testing::EndsWith("the password is wrong\n"));
    }
}

TEST_F(Convert, AnInterruptedPromptLeavesTheTerminalAsItWas) {
    CTerminalRun run(TQC_SAMPLES "/prices-locked.xtqf", m_folder.Path("out.csv"));
    run.Answer("sec\x03");
    const int status = run.Finish();
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) << run.Shown();
    EXPECT_FALSE(m_folder.Exists("out.csv"));
}

} // namespace
} // namespace NSTQ::Tests
