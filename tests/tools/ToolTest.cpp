// tqc on delimited text: what it takes it for, its rows and their limits, its output, and what it refuses.
#include "support/ZipWriter.h"
#include "tools/CToolTest.h"

#include <sys/stat.h>

#include <array>
#include <chrono>
#include <pty.h>
#include <regex>
#include <set>
#include <thread>

namespace NSTQ::Tests {
namespace {

using namespace std::string_literals;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

const std::string JAPANESE_UTF8 = "\xE8\xA1\xA8"; // its second byte in Shift_JIS is a backslash
const std::string JAPANESE_SJIS = "\x95\x5C";

class Tool : public CToolTest {
protected:
    std::string MakeBigFile() const {
        const std::string rows = Repeat("12345,abcdef,\"quoted, text\",678901\n", 300'000);
        m_folder.WriteFile("big.csv", rows);
        return rows;
    }
};

TEST_F(Tool, FindsOutTypeLineEndAndCodePage) {
    m_folder.WriteFile("empty.dat", "");
    const std::string package = MakeZip({{.name = "TqData\\SourceFile.csv", .content = "k,l\n"}});
    const SCase cases[] = {
        {"a.csv", "a,b\r\n1,\"x,y\"\r\n", "a,b\r\n1,\"x,y\"\r\n"},
        {"a.csv", "a,b\r1,2\r", "a,b\r\n1,2\r\n"},
        {"a.csv", "a\n\n\nb\n\n", "a\r\n\r\n\r\nb\r\n\r\n"},
        {"a.csv", "x\"y,\"a\nb\"\r\nd\r\n", "\"x\"\"y\",\"a\nb\"\r\nd\r\n"},
        {"a.csv --quote-newline --output-eol cr", "\"a\nb\",\"\rc\"\n", "\"a\nb\",\"\rc\"\r"},
        {"a.csv --no-quote-newline", "\"a\nb\",c\n", "a\r\n\"b\"\"\",c\r\n"},
        {"a.csv --eol cr", "a\rb\nc\n", "a\r\nbc\r\n"},
        {"a.txt", "a,b\tc\n", "\"a,b\",c\r\n"},
        {"a.txt", "abc  1\r\n", "", "fixed-length", 5},
        {"a.dat", "a,b\n", "a,b\r\n"},
        {"./plain", "a\tb\n", "a,b\r\n"},
        {"empty.dat", "", ""},
        {"a.dat", "abc\n", "", "a.dat: unknown type", 5},
        {"a.dat --type csv", "abc\n", "abc\r\n"},
        {"a.xtqf --type tsv", "a\tb\n", "a,b\r\n"},
        {"a.dat --separator ;", "a;b\n", "a,b\r\n"},
        {"a.xls", "x", "", "a.xls: ", 5},
        {"a.csv", "\xFF\xFE"s + "a\0,\0"s, "", "UTF-16", 5},
        // The bytes tell more than the name.
        {"a.csv", package, "k,l\r\n"},
        {"a.csv", MakeZip({{.name = "a.csv", .content = "k,l\n"}}), "", "a.csv: seems to be a zip archive", 5},
        {"a.csv --type tsv --limit 1", "PK\x03\x04\nb\n", "PK\r\n"},
        {"a.accdt", "PK\x03\x04", "", "a database template", 5},
        {"info a.txt", "%PDF-1.4\n,", "", "a PDF document; give --type csv", 5},
        {"preview a.csv", "\x89PNG\r\n\x1A\n", "", "an image", 5},
        {"a.dat --separator ;", "RIFF....WEBPVP8;\n", "", "an image", 5},
        {"a.csv", "\x1F\x8B\b", "", "compressed data", 5},
        {"a.csv", "a,b\n\0,c\n"s, "", "NUL bytes", 5},
        {"a.csv --type csv", "a,b\n\0,c\n"s, "a,b\r\n,c\r\n"},
        {"a.csv", "a\0,\0b\0"s, "", "UTF-16LE", 5},
        {"a.txt", "\0a\0,\0\x8B"s, "", "UTF-16BE", 5},
        // The mark, and the code page of the rows and of the path.
        {"a.csv", MARK, ""},
        {"a.csv --encoding ansi", MARK + "a\n", MARK + "a\r\n"},
        {"a.csv --code-page sjis", JAPANESE_SJIS, JAPANESE_SJIS + "\r\n"},
        {"a.csv --code-page 932", MARK + JAPANESE_UTF8 + ",\xE2\x82\xAC\n", JAPANESE_SJIS + ",?\r\n",
         "row 1: replaced: characters that 932 (shift_jis) cannot represent", 1},
        {"a.csv --code-page 932 --encoding utf-8", JAPANESE_UTF8 + "\n", JAPANESE_SJIS + "\r\n"},
        {JAPANESE_UTF8 + ".csv", "a\n", "a\r\n"},
        {JAPANESE_UTF8 + ".csv --code-page 932", "a\n", "a\r\n"},
        {"\xC2\xA5.csv --code-page 932", "a\n", "", "try --code-page 65001", 2},
        {"a\\b.csv", "a\n", "", "read as '/'", 2},
    };
    Check(cases);
}

TEST_F(Tool, ReportsEachRowThatItCannotTakeWhole) {
    const std::string leftOut = "row 2: 4 bytes or more, left out";
    const SCase cases[] = {
        {"a.csv --max-fields 2", "1,2\n1,2,3\n1\n", "1,2\r\n1,2\r\n1\r\n", "a.csv: row 2: more than 2 fields", 1},
        {"a.csv --max-field-size 5", "abcd\nabc" + JAPANESE_UTF8 + ",z\n", "abcd\r\nabc,z\r\n",
         "row 2: field 1 has 6 bytes", 1},
        {"a.csv --max-line-size 4", "abc\nabcdefghijkl", "abc\r\n", leftOut, 1},
        {"a.csv --max-line-size 4 --code-page 932", MARK + "abc\nabcd\n\nxyz\n", "abc\r\n\r\nxyz\r\n", leftOut, 1},
        {"a.csv", "a\n" + std::string(70'000, 'x') + "\nb\n", "a\r\nb\r\n", "row 2: 65535 bytes or more, left out",
         1},
        {"a.csv --max-line-size 5", "a\n1,\"b\nc\nd\n", "a\r\nd\r\n",
         "row 2: the quote at byte 4 of the file is not closed before the row has 5 bytes, left out; try --no-q", 1},
        {"a.csv", "a\n1,\"b\nc\n", "a\r\n1,\"b\nc\n\"\r\n",
         "row 2: the quote at byte 4 of the file is not closed, so", 1},
        {"a.csv --on-error stop", "a\n1,\"b\nc\n", "a\r\n",
         "row 2: the quote at byte 4 of the file is not closed; try", 5},
        {"a.csv", std::string(65'534, 'x') + "\nb\n", std::string(65'534, 'x') + "\r\nb\r\n"},
        {"a.csv", "a,b,\x1A\x63\nd\n", "a,b\r\nc\r\nd\r\n", "row 1: ended by a SUB byte", 1},
        {"a.csv", "a\n\x1A\x62\n", "a\r\nb\r\n", "row 2: a SUB byte", 1},
        {"a.csv --code-page 932", MARK + "a\n\x1A", "a\r\n"},
        {"a.csv --max-fields 2 --quiet", "1,2,3\n", "1,2\r\n", "", 1},
        {"a.csv --skip 1 --limit 2", "1\n2\n3\n4\n", "2\r\n3\r\n"},
    };
    Check(cases);
    m_folder.WriteFile("many.csv", Repeat("1,2\n", 12));
    const SResult result = Run("many.csv --max-fields 1");
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 11);
    EXPECT_THAT(result.errors, AllOf(HasSubstr("row 10:"), Not(HasSubstr("row 11:")), HasSubstr("2 more rows")));
}

TEST_F(Tool, RefusesWhatItCannotUse) {
    m_folder.WriteFile("a.csv", "a\n");
    m_folder.WriteFile("readonly.csv", "old");
    m_folder.MakeFolder("folder.csv");
    ::chmod(m_folder.Path("readonly.csv").c_str(), 0444);
    const SCase cases[] = {
        {"", "", "", "no file given", 2},
        {"a.csv --bogus", "", "", "--bogus", 2},
        {"a.csv --type json", "", "", "csv, tsv, fix, xls, xlsx, mdb, accdb, xtqf", 2},
        {"a.csv --eol x", "", "", "crlf, lf, cr", 2},
        {"a.csv --encoding utf-16", "", "", "auto, ansi, 932 (shift_jis)", 2},
        {"a.csv --code-page 1251", "", "", "932 (shift_jis)", 2},
        {"a.csv --separator \"", "", "", "one ASCII character", 2},
        {"a.csv --max-fields 0", "", "", "1 to 65535", 2},
        {"a.csv --max-field-size 12x", "", "", "1 to 65535", 2},
        {"a.csv --skip -1", "", "", "0 to 18446744073709551615", 2},
        {"missing.csv", "", "", "missing.csv: No such file", 3},
        {"folder.csv", "", "", "a folder", 3},
        {Repeat("./", 130) + "a.csv", "", "", "260 bytes", 6},
        {"a.csv --output=", "", "", "--output", 2},
        {"a.csv -o folder.csv", "", "", "a folder", 7},
        {"a.csv -o nowhere/b.csv", "", "", "nowhere/b.csv", 7},
        {"a.csv -o readonly.csv", "", "", "is not writable", 7},
    };
    Check(cases);
    EXPECT_EQ(m_folder.ReadFile("readonly.csv"), "old");
}

TEST_F(Tool, InfoTellsWhatTheSamplesAre) {
    const std::pair<const char*, const char*> cases[] = {
        {"prices-sjis.csv",
         "comma-separated text,not UTF-8, probably 932 (shift_jis); if so, give --encoding shift_jis,CR LF"},
        {"prices-sjis.csv --code-page 932", "comma-separated text,code page 932 (shift_jis),CR LF"},
        {"prices-utf8.csv --code-page 932", "comma-separated text,UTF-8 (BOM),CR LF"},
        {"stock.tsv", "tab-separated text,UTF-8,LF"},
        {"ledger.txt", "fixed-length text,UTF-8,CR LF"},
    };
    for (const auto& [line, told] : cases) {
        const auto size = std::filesystem::file_size(TQC_SAMPLES "/"s + Words(line)[0]);
        const std::regex form("Type:          (.*)\nSize:          " + std::to_string(size) +
                              " bytes\nUpdated:       20[0-9-]+ [0-9:]+ [+-][0-9]+\n"
                              "Character set: (.*)\nLine end:      (.*)\n");
        EXPECT_EQ(std::regex_replace(Run("info " TQC_SAMPLES "/"s + line).output, form, "$1,$2,$3"), told);
    }
}

TEST_F(Tool, CodePageComesFromTheLocale) {
    m_folder.WriteFile("a.csv", MARK + JAPANESE_UTF8 + "\n");
    const std::pair<const char*, std::string> cases[] = {{"ja_JP.SJIS", JAPANESE_SJIS},
                                                         {"ja_JP.UTF-8@x", JAPANESE_UTF8},
                                                         {"C", JAPANESE_UTF8},
                                                         {"ja_JP.eucJP", JAPANESE_UTF8}};
    for (const auto& [locale, expected] : cases)
        EXPECT_EQ(Run("a.csv", {.locale = locale}).output, expected + "\r\n") << locale;
}

TEST_F(Tool, ReplacesTheTargetInOneStep) {
    m_folder.WriteFile("a.csv", "a\n");
    m_folder.WriteFile("old.csv", "something longer that was there before");
    ::chmod(m_folder.Path("old.csv").c_str(), 0640);
    std::filesystem::create_symlink("old.csv", m_folder.Path("link.csv"));
    std::filesystem::create_symlink("fresh.csv", m_folder.Path("dangling.csv"));
    const std::string longest(250, 'n');
    for (const std::string& target : {"new.csv"s, "link.csv"s, "dangling.csv"s, "a.csv"s, longest})
        EXPECT_EQ(Run("a.csv -o " + target).status, 0) << target;
    const std::vector<std::string> names = {"a.csv",   "dangling.csv", "fresh.csv", "link.csv",
                                            "new.csv", longest,        "old.csv"};
    EXPECT_EQ(Names(), names);
    for (const std::string& name : names)
        EXPECT_EQ(m_folder.ReadFile(name), "a\r\n") << name;
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder.Path("link.csv")));
    struct stat status {};
    ::stat(m_folder.Path("old.csv").c_str(), &status);
    EXPECT_EQ(status.st_mode & 07777, 0640U);
}

/// Of another user's link in a folder that is shared nothing is made; in one that is not, it is followed.
TEST_F(Tool, FollowsNoPlantedLinks) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root makes links that are another user's";
    m_folder.WriteFile("a.csv", "a\n");
    m_folder.WriteFile("there.csv", "old");
    for (const auto& [folder, mode] : {std::pair<std::string, mode_t>("shared", 01777), {"own", 0755}})
        for (const std::string target : {"there.csv", "new.csv"}) {
            const std::string link = folder + "/" + target;
            std::filesystem::create_symlink("../" + target, m_folder.MakeFolder(folder) + '/' + target);
            ASSERT_EQ(::lchown(m_folder.Path(link).c_str(), 1, 1) + ::chmod(m_folder.Path(folder).c_str(), mode), 0);
            EXPECT_EQ(Run("a.csv -o " + link).status, folder == "own" ? 0 : 7) << link;
            EXPECT_EQ(m_folder.Exists("new.csv"), folder == "own" && target == "new.csv") << link;
        }
}

/// While it writes, and whatever the file that it replaces allows.
TEST_F(Tool, WhatIsNotFinishedIsItsOwnersAlone) {
    m_folder.WriteFile("old.csv", "old");
    ::chmod(m_folder.Path("old.csv").c_str(), 0644);
    int ends[2];
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC), 0);
    CProgram program({"-", "--type", "csv", "-o", "old.csv"}, {.folder = m_folder.Path(), .input = ends[0]});
    ::close(ends[0]);
    const std::string rows = Repeat("12345,abcdef\n", 20'000);
    ASSERT_EQ(::write(ends[1], rows.data(), rows.size()), static_cast<ssize_t>(rows.size()));
    unsigned seen = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/" + std::to_string(program.Id()) + "/fd")) {
        struct stat status {};
        const bool isInFolder = std::filesystem::read_symlink(entry).string().starts_with(m_folder.Path());
        if (isInFolder && ::stat(entry.path().c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
            EXPECT_EQ(status.st_mode & 0777, 0600U);
            ++seen;
        }
    }
    EXPECT_GT(seen, 0U);
    ::close(ends[1]);
    EXPECT_EQ(program.Finish().status, 0);
}

TEST_F(Tool, AppendsToStandardOutputAndRefusesItsOwnSource) {
    m_folder.WriteFile("a.csv", "a\n");
    m_folder.WriteFile("log.csv", "kept\n");
    for (const char* name : {"log.csv", "a.csv"}) {
        const int file = ::open(m_folder.Path(name).c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
        EXPECT_EQ(Run("a.csv", {.output = file}).status, name == "log.csv"s ? 0 : 2);
        ::close(file);
    }
    EXPECT_EQ(m_folder.ReadFile("log.csv"), "kept\na\r\n");
    EXPECT_EQ(m_folder.ReadFile("a.csv"), "a\n");
}

TEST_F(Tool, SaysWhenTheDeviceIsFull) {
    MakeBigFile();
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    for (const SResult& result : {Run("big.csv", {.output = full}), Run("big.csv -o /dev/full"),
                                  Run("--help", {.output = full}), Run("info big.csv --json", {.output = full})}) {
        EXPECT_EQ(result.status, 7);
        EXPECT_THAT(result.errors, testing::ContainsRegex("[Nn]o space left"));
    }
    ::close(full);
}

TEST_F(Tool, ReadsAndWritesNamedPipes) {
    for (const char* name : {"in.csv", "in", "out"})
        ASSERT_EQ(::mkfifo(m_folder.Path(name).c_str(), 0600), 0);
    const std::string rows = MARK + "a,1\n" + Repeat("b\n", 50'000);
    for (const std::string line : {"in.csv", "in", "in --rejects r", "in --type csv --skip 0"}) {
        std::string received;
        std::thread reader([&] {
            std::ifstream stream(m_folder.Path("out"));
            received.assign(std::istreambuf_iterator<char>(stream), {});
        });
        std::thread writer([&] { m_folder.WriteFile(Words(line)[0], rows); });
        const SResult result = Run(line + " -o out");
        writer.join();
        reader.join();
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(received, "a,1\r\n" + Repeat("b\r\n", 50'000)) << line;
    }
}

TEST_F(Tool, ConvertsTextBeforeItHasAllComeAndForAsLongAsItIsRead) {
    int ends[2];
    ::signal(SIGPIPE, SIG_IGN);
    ASSERT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    CProgram program({"-", "--type", "csv"}, {.folder = m_folder.Path(), .input = ends[0]});
    ::close(ends[0]);
    std::thread writer([&] {
        const std::string rows = Repeat("12345,abcdef\n", 5'000);
        pollfd waiting{ends[1], POLLOUT, 0};
        while (::poll(&waiting, 1, -1) == 1 && (waiting.revents & POLLERR) == 0)
            static_cast<void>(::write(ends[1], rows.data(), rows.size()));
    });
    EXPECT_THAT(program.ReadSome(), testing::StartsWith("12345,abcdef\r\n12345"));
    program.CloseOutput();
    const SResult result = program.Finish();
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "") << "it ends quietly when its reader goes away";
    writer.join();
    ::close(ends[1]);
}

/// From before it has started until after it is done; with standard input, whose copy goes as well.
TEST_F(Tool, KilledAtAnyMomentItLeavesTheOldFileOrTheNewOne) {
    std::string rows;
    for (int i = 0; i < 40'000; ++i)
        rows += "12345,abcdef," + std::to_string(i) + "\r\n";
    m_folder.WriteFile("in.csv", rows);
    const auto arguments = Words("in.csv - --type csv -o out.csv --rejects bad.csv");
    const auto start = [&] {
        const int input = ::open(m_folder.Path("in.csv").c_str(), O_RDONLY | O_CLOEXEC);
        auto program =
            std::make_unique<CProgram>(arguments, CProgram::SSetting{.folder = m_folder.Path(), .input = input});
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
        for (const std::string& name : Names()) {
            const bool isUnfinished = name.starts_with(".out.csv.tqc-") || name.starts_with(".bad.csv.tqc-");
            EXPECT_TRUE(isUnfinished ? signal == SIGKILL : name == "in.csv" || name == "out.csv" || name == "bad.csv")
                << name << " after " << signal;
            if (isUnfinished)
                std::filesystem::remove(m_folder.Path(name));
        }
    }
    EXPECT_EQ(seen.size(), 2U) << "the moments do not span the whole run";
}

TEST_F(Tool, NoticesThatTheSourceBecameShorter) {
    const std::string rows = MakeBigFile();
    CProgram program({"big.csv"}, {.folder = m_folder.Path()});
    program.ReadSome();
    // The program waits for the pipe to be emptied.
    std::filesystem::resize_file(m_folder.Path("big.csv"), rows.size() / 2);
    const SResult result = program.Finish();
    EXPECT_EQ(result.status, 5);
    EXPECT_THAT(result.errors, HasSubstr("became shorter"));
}

TEST_F(Tool, ShowsProgressOnATerminalOnly) {
    MakeBigFile();
    int master = -1, terminal = -1;
    ASSERT_EQ(::openpty(&master, &terminal, nullptr, nullptr, nullptr), 0);
    const auto shown = [&](const std::string& line) {
        EXPECT_EQ(Run(line, {.errors = terminal}).status, line.starts_with("big.csv") ? 0 : 3);
        EXPECT_EQ(::write(terminal, "~", 1), 1);
        std::string text;
        for (char c = 0; !text.ends_with('~') && ::read(master, &c, 1) == 1;)
            text += c;
        return text;
    };
    EXPECT_THAT(shown("big.csv -o out.csv"),
                AllOf(HasSubstr("\r["), HasSubstr(" %"), testing::EndsWith("\r\033[K~")));
    const std::string both = shown("big.csv ./big.csv -o out.csv");
    const std::regex bar(R"(\] ([ 0-9]{3}) % big.csv)");
    const std::vector<std::string> percents(std::sregex_token_iterator(both.begin(), both.end(), bar, 1), {});
    EXPECT_TRUE(!percents.empty() && std::ranges::is_sorted(percents)) << both;
    EXPECT_EQ(shown("big.csv"), "~") << "the other end of the pipe may have the terminal";
    EXPECT_EQ(shown("big.csv -o out.csv --quiet"), "~");
    EXPECT_THAT(shown("nothing.csv"), HasSubstr("\033[1;31mtqc:\033[0m nothing.csv: "));
    ::setenv("NO_COLOR", "1", 1);
    EXPECT_THAT(shown("nothing.csv"), testing::StartsWith("tqc: nothing.csv: "));
    ::unsetenv("NO_COLOR");
    ::close(terminal);
    ::close(master);
}

} // namespace
} // namespace NSTQ::Tests
