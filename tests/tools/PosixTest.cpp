// tqc with what only POSIX systems have, apart from the other tests so that these can run on other systems: locales
// in the environment, file modes, links, named pipes, devices, signals, terminals and bash.
#include "support/ZipWriter.h"
#include "tools/CToolTest.h"
#include "xlsx/XlsxBuilder.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <termios.h>

#include <array>
#include <chrono>
#include <map>
#include <regex>
#include <set>
#include <thread>

namespace NSTQ::Tests {
namespace {

using testing::AllOf;
using testing::HasSubstr;

class Posix : public CToolTest {
protected:
    std::string MakeBigFile() const {
        const std::string rows = Repeat("12345,abcdef,\"quoted, text\",678901\n", 300'000);
        m_folder.WriteFile("big.csv", rows);
        return rows;
    }
    /// With standard output at the end of a file.
    SResult RunInto(const std::string& path, const std::string& line) const {
        const int file = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
        const SResult result = Run(line, {.output = file});
        ::close(file);
        return result;
    }
    void SetMode(const char* name, mode_t mode) const { ASSERT_EQ(::chmod(m_folder.Path(name).c_str(), mode), 0); }
};

TEST_F(Posix, CodePageComesFromTheLocale) {
    m_folder.WriteFile("a.csv", BOM + "\xE8\xA1\xA8\n");
    const std::pair<const char*, std::string> cases[] = {{"ja_JP.SJIS", "\x95\x5C"},
                                                         {"ja_JP.UTF-8@x", "\xE8\xA1\xA8"},
                                                         {"C", "\xE8\xA1\xA8"},
                                                         {"ja_JP.eucJP", "\xE8\xA1\xA8"}};
    for (const auto& [locale, expected] : cases)
        EXPECT_EQ(Run("a.csv", {.locale = locale}).output, expected + "\r\n") << locale;
}

TEST_F(Posix, ReplacesTheTargetOfALinkAndKeepsItsMode) {
    m_folder.WriteFile("a.csv", "a\n");
    m_folder.WriteFile("old.csv", "something longer that was there before");
    SetMode("old.csv", 0640);
    std::filesystem::create_symlink("old.csv", m_folder.Path("link.csv"));
    std::filesystem::create_symlink("fresh.csv", m_folder.Path("dangling.csv"));
    const std::string longest(250, 'n');
    for (const std::string& target : {std::string("link.csv"), std::string("dangling.csv"), longest})
        EXPECT_EQ(Run("a.csv -o " + target).status, 0) << target;
    EXPECT_THAT(Names(), testing::ElementsAre("a.csv", "dangling.csv", "fresh.csv", "link.csv", longest, "old.csv"));
    for (const std::string& name : {std::string("old.csv"), std::string("fresh.csv"), longest})
        EXPECT_EQ(m_folder.ReadFile(name), "a\r\n") << name;
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder.Path("link.csv")));
    EXPECT_EQ(std::filesystem::status(m_folder.Path("old.csv")).permissions(), std::filesystem::perms{0640});
}

/// Another user's link is followed only in a folder that is not shared.
TEST_F(Posix, FollowsNoPlantedLinks) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can make links that belong to another user";
    m_folder.WriteFile("a.csv", "a\n");
    m_folder.WriteFile("there.csv", "old");
    for (const auto& [folder, mode] : {std::pair<std::string, mode_t>("shared", 01777), {"own", 0755}})
        for (const std::string target : {"there.csv", "new.csv"}) {
            const std::string link = folder + "/" + target;
            std::filesystem::create_symlink("../" + target, m_folder.MakeFolder(folder) + '/' + target);
            ASSERT_EQ(::lchown(m_folder.Path(link).c_str(), 1, 1), 0);
            SetMode(folder.c_str(), mode);
            EXPECT_EQ(Run("a.csv -o " + link).status, folder == "own" ? 0 : 7) << link;
            EXPECT_EQ(m_folder.Exists("new.csv"), folder == "own" && target == "new.csv") << link;
        }
}

TEST_F(Posix, AppendsToStandardOutputAndRefusesItsOwnSource) {
    m_folder.WriteFile("a.csv", "a\n");
    EXPECT_EQ(RunInto(m_folder.WriteFile("log.csv", "kept\n"), "a.csv").status, 0);
    EXPECT_EQ(RunInto(m_folder.Path("a.csv"), "a.csv").status, 2);
    EXPECT_EQ(m_folder.ReadFile("log.csv") + m_folder.ReadFile("a.csv"), "kept\na\r\na\n");
}

TEST_F(Posix, SaysWhenTheDeviceIsFull) {
    MakeBigFile();
    for (const SResult& result : {RunInto("/dev/full", "big.csv"), Run("big.csv -o /dev/full"),
                                  RunInto("/dev/full", "--help"), RunInto("/dev/full", "info big.csv --json")}) {
        EXPECT_EQ(result.status, 7);
        EXPECT_THAT(result.errors, testing::ContainsRegex("[Nn]o space left"));
    }
}

/// No file may have more than 8 KiB. SQLite keeps the reason to itself, unless the disk is full.
TEST_F(Posix, AnOutputThatDoesNotFitLeavesTheOldOne) {
    MakeBigFile();
    m_folder.WriteFile("utf16.csv", "\xFF\xFE" + Repeat(std::string("1\0\n\0", 4), 5'000));
    std::vector<std::string> lines = {"big.csv -o out.csv", "big.csv -o out.jsonl", "big.csv --out-dir x --jobs 2"};
#ifdef TQC_WITH_SQLITE
    lines.emplace_back("big.csv -o out.sqlite");
#endif
    lines.emplace_back("utf16.csv -o out.csv");
    const std::string names[] = {"x/big.csv", "out.csv", "out.jsonl", "out.sqlite"};
    m_folder.MakeFolder("x");
    for (const std::string& name : names)
        m_folder.WriteFile(name, "old");
    ::signal(SIGXFSZ, SIG_IGN);
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small{8192, before.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &small);
    std::vector<SResult> results;
    for (const std::string& line : lines)
        results.push_back(Run(line));
    ::setrlimit(RLIMIT_FSIZE, &before);
    ::signal(SIGXFSZ, SIG_DFL);
    for (const SResult& result : results) {
        EXPECT_EQ(result.status, 7);
        EXPECT_THAT(result.errors, testing::ContainsRegex("[Nn]o space left|disk I/O error"));
    }
    EXPECT_THAT(results.back().errors, testing::HasSubstr("set TMPDIR to a folder with more room"));
    for (const std::string& name : names)
        EXPECT_EQ(m_folder.ReadFile(name), "old") << name;
}

TEST_F(Posix, ReadsAndWritesNamedPipes) {
    for (const char* name : {"in.csv", "in", "out"})
        ASSERT_EQ(::mkfifo(m_folder.Path(name).c_str(), 0600), 0);
    const std::string rows = BOM + "a,1\n" + Repeat("b\n", 50'000);
    for (const std::string line : {"in.csv", "in", "in --rejects r", "in --type csv --skip 0"}) {
        std::string received;
        std::thread reader([&] { received = m_folder.ReadFile("out"); });
        std::thread writer([&] { m_folder.WriteFile(Words(line)[0], rows); });
        const SResult result = Run(line + " -o out");
        writer.join();
        reader.join();
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(received, "a,1\r\n" + Repeat("b\r\n", 50'000)) << line;
    }
}

TEST_F(Posix, ConvertsRowsAsTheyArriveAndEndsWithItsReader) {
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
    EXPECT_EQ(result.errors, "") << "a reader that goes away is no error";
    writer.join();
    ::close(ends[1]);
}

/// Signals before the program has started, until after it has ended; from standard input, whose copy goes as well.
/// What SIGKILL leaves only the owner may read until it is complete: it gets the permissions of the output before it
/// takes its place.
TEST_F(Posix, KilledAtAnyMomentItLeavesTheOldFileOrTheNewOne) {
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
    ASSERT_EQ(start()->Finish().status, 0);
    const auto began = std::chrono::steady_clock::now();
    ASSERT_EQ(start()->Finish().status, 0);
    const auto whole = std::chrono::steady_clock::now() - began;
    const std::map<std::string, std::string> complete{{"out.csv", rows + rows},
                                                      {"bad.csv", m_folder.ReadFile("bad.csv")}};
    std::set<std::string> seen;
    constexpr int moments = 120;
    for (int moment = 0; moment < moments; ++moment) {
        const int signal = std::array{SIGINT, SIGTERM, SIGHUP, SIGKILL}[static_cast<std::size_t>(moment % 4)];
        const std::string old = moment % 3 != 0 ? "old" : "";
        std::filesystem::remove(m_folder.Path("out.csv"));
        if (!old.empty())
            m_folder.WriteFile("out.csv", old);
        const auto program = start();
        std::this_thread::sleep_for(whole * 2 * moment / moments);
        ::kill(program->Id(), signal);
        program->Finish();
        const std::string content = m_folder.Exists("out.csv") ? m_folder.ReadFile("out.csv") : "";
        EXPECT_TRUE(content == old || content == complete.at("out.csv")) << content.size();
        seen.insert(content == old ? "old" : "new");
        EXPECT_TRUE(std::filesystem::is_empty(m_folder.Path("tmp"))) << signal;
        for (const std::string& name : Names()) {
            const bool isHidden = name.starts_with(".out.csv.tqc-") || name.starts_with(".bad.csv.tqc-");
            EXPECT_TRUE(isHidden ? signal == SIGKILL : name == "in.csv" || complete.contains(name))
                << name << " after " << signal;
            if (isHidden) {
                const auto permissions = std::filesystem::status(m_folder.Path(name)).permissions();
                EXPECT_TRUE(permissions == std::filesystem::perms{0600} ||
                            m_folder.ReadFile(name) == complete.at(name.substr(1, 7)))
                    << name;
                std::filesystem::remove(m_folder.Path(name));
            }
        }
    }
    EXPECT_EQ(seen.size(), 2U) << "the moments do not span the whole run";
}

/// TearDown checks that the temporary folder is empty.
TEST_F(Posix, ASignalLeavesNoUnpackedFolder) {
    m_folder.WriteFile("a.xtqf", MakeZip({{.name = "TqData/SourceFile.csv", .content = Repeat("a,b,12\n", 80'000)}}));
    CProgram program({"a.xtqf"}, {.folder = m_folder.Path()});
    program.ReadSome();
    ::kill(program.Id(), SIGTERM);
    EXPECT_EQ(program.Finish().status, -SIGTERM);
}

TEST_F(Posix, ShowsProgressOnlyOnATerminal) {
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
    EXPECT_EQ(shown("big.csv"), "~") << "the other end of the pipe may have the terminal";
    EXPECT_EQ(shown("big.csv -o out.csv --quiet"), "~");
    EXPECT_THAT(shown("nothing.csv"), HasSubstr("\033[1;31mtqc:\033[0m nothing.csv: "));
    ::setenv("NO_COLOR", "1", 1);
    EXPECT_THAT(shown("nothing.csv"), testing::StartsWith("tqc: nothing.csv: "));
    ::unsetenv("NO_COLOR");
    ::close(terminal);
    ::close(master);
}

bool IsEchoing(const CProgram& program) {
    termios settings{};
    return ::tcgetattr(program.Terminal(), &settings) == 0 && (settings.c_lflag & ECHO) != 0;
}

/// Answers each prompt, at which the echo is off; `shown` is what the terminal shows until the end.
SResult AnswerPrompts(const std::string& source, const std::string& output, const std::vector<std::string>& answers,
                      std::string& shown) {
    CProgram program({source, "--encoding", "932", "-o", output}, {.isAtTerminal = true});
    for (const std::string& answer : answers) {
        for (const std::size_t from = shown.size(); shown.find(source + ": ", from) == std::string::npos;) {
            const std::string some = program.ReadSome();
            EXPECT_NE(some, "") << shown;
            if (some.empty())
                return {};
            shown += some;
        }
        EXPECT_FALSE(IsEchoing(program));
        EXPECT_EQ(::write(program.Terminal(), answer.data(), answer.size()), static_cast<ssize_t>(answer.size()));
    }
    const SResult result = program.Finish();
    EXPECT_TRUE(IsEchoing(program));
    shown += result.output;
    return result;
}

TEST_F(Posix, AsksForThePasswordWithoutShowingIt) {
    const std::string out = m_folder.Path("out.csv"), package = TQC_SAMPLES "/prices-locked.xtqf";
    std::vector<std::string> sources = {package};
#if defined(TQC_WITH_ENCRYPTION)
    sources.push_back(TQC_SAMPLES "/prices-locked.xlsx");
#endif
    for (const std::string& source : sources) {
        std::string shown;
        EXPECT_EQ(AnswerPrompts(source, out, {"wrong\n", "secret\n"}, shown).status, 0) << shown;
        EXPECT_THAT(shown, AllOf(HasSubstr("Wrong password"), testing::Not(HasSubstr("secret"))));
        EXPECT_GT(m_folder.ReadFile("out.csv").size(), 50U);
        std::filesystem::remove(out);
    }
    std::string shown;
    EXPECT_EQ(AnswerPrompts(m_folder.WriteFile("a.xlsx", "PK\3\4"), out, {}, shown).status, 5)
        << "no password can help: " << shown;
    EXPECT_EQ(AnswerPrompts(package, out, {"sec\x03"}, shown).status, -SIGINT) << shown;
    EXPECT_FALSE(m_folder.Exists("out.csv"));
}

/// Calls the shell's function as the shell does, with the words of a line; '_' stands for an empty word.
TEST_F(Posix, CompletesInBash) {
    SXlsxParts parts;
    parts.sheetNames = {"Q 1", "Q\xE2\x82\xAC", "It's"};
    for (const char* name : {"book.xlsx", "book.dat"})
        m_folder.WriteFile(name, parts.File());
    for (const char* name : {"a.csv", "fix.txt", "long.csv"})
        m_folder.WriteFile(name, "a\n");
    const std::pair<const char*, std::string> cases[] = {
        {"book.xlsx --sheet _", "Q\\ 1\nQ\xE2\x82\xAC\nIt\\'s\n"},
        {"-o a.csv ./book.xlsx --sheet = It", "It\\'s\n"},
        {"--type xlsx book.dat --sheet Q\\~", "Q\\ 1\n"},
        {"a.csv --sheet _", ""},
        {"--type x", "xls\nxlsx\nxtqf\n"},
        {"a.csv --out", "--output\n--out-dir\n--output-separator\n--output-eol\n--output-encoding\n"},
        {"l", "list\nlong.csv\n"},
        {"a.csv --out-dir t", "tmp\n"},
        {"--max-fields 2 fix", "fix.txt\n"},
    };
    for (const auto& [typed, completions] : cases) {
        std::string script = "PATH=$(dirname " TQC_PROGRAM "):$PATH; . " TQC_COMPLETIONS "/tqc.bash\nCOMP_WORDS=(tqc";
        const auto words = Words(typed);
        for (const std::string& word : words)
            script += " $'" + std::regex_replace(word == "_" ? "" : word, std::regex(R"(\\)"), R"(\\\\)") + "'";
        script += ")\nCOMP_CWORD=" + std::to_string(words.size());
        script += "\n_tqc\nprintf '%s\\n' \"${COMPREPLY[@]}\" | sed '/^$/d' >completions\n";
        m_folder.WriteFile("script", script);
        ASSERT_EQ(std::system(("cd " + m_folder.Path() + " && LC_ALL=C.UTF-8 bash script").c_str()), 0);
        EXPECT_EQ(m_folder.ReadFile("completions"), completions) << typed;
    }
}

} // namespace
} // namespace NSTQ::Tests
