// Runs of the program in a folder of their own, with the expected output.
#pragma once

#include "support/Bytes.h"
#include "support/TempFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace NSTQ::Tests {

struct SResult {
    std::string output;
    std::string errors;
    int status = -1; ///< the exit status, or minus the signal that ended it
};

/// A program that a test starts: its arguments, its folder, and its output.
class CProgram {
public:
    struct SSetting {
        std::string folder = ".";
        int output = -1; ///< a descriptor for standard output; -1: a pipe to the test
        int errors = -1; ///< likewise for standard error
        std::string locale = "C.UTF-8";
        int input = -1;            ///< a descriptor for standard input; -1: that of the test
        bool isAtTerminal = false; ///< of its own, which is also its output
    };

    CProgram(std::vector<std::string> arguments, const SSetting& setting) {
        if (setting.isAtTerminal) {
            m_iChild = ::forkpty(&m_iOutput, nullptr, nullptr, nullptr);
            if (m_iChild == 0)
                Execute(arguments, setting);
            return;
        }
        int output[2], errors[2];
        if (::pipe2(output, O_CLOEXEC) != 0 || ::pipe2(errors, O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe");
        m_iChild = ::fork();
        if (m_iChild == 0) {
            ::dup2(setting.output >= 0 ? setting.output : output[1], STDOUT_FILENO);
            if (setting.input >= 0)
                ::dup2(setting.input, STDIN_FILENO);
            ::dup2(setting.errors >= 0 ? setting.errors : errors[1], STDERR_FILENO);
            Execute(arguments, setting);
        }
        ::close(output[1]);
        ::close(errors[1]);
        m_iOutput = output[0];
        m_iErrors = errors[0];
    }
    CProgram(const CProgram&) = delete;
    CProgram& operator=(const CProgram&) = delete;
    ~CProgram() {
        if (m_iChild > 0) {
            ::kill(m_iChild, SIGKILL);
            ::waitpid(m_iChild, nullptr, 0);
        }
        CloseOutput();
        ::close(m_iErrors);
    }

    void CloseOutput() {
        if (m_iOutput >= 0)
            ::close(m_iOutput);
        m_iOutput = -1;
    }
    /// Waits for the first bytes of output.
    std::string ReadSome() {
        char bytes[100];
        const ssize_t got = ::read(m_iOutput, bytes, sizeof bytes);
        return {bytes, got < 0 ? 0 : static_cast<std::size_t>(got)};
    }
    pid_t Id() const { return m_iChild; }
    int Terminal() const { return m_iOutput; }

    SResult Finish() {
        SResult result;
        pollfd streams[] = {{m_iOutput, POLLIN, 0}, {m_iErrors, POLLIN, 0}};
        std::string* const texts[] = {&result.output, &result.errors};
        while (streams[0].fd >= 0 || streams[1].fd >= 0) {
            ::poll(streams, 2, -1);
            for (int i = 0; i < 2; ++i)
                if (streams[i].revents != 0 && !Append(streams[i].fd, *texts[i]))
                    streams[i].fd = -1;
        }
        int status = 0;
        ::waitpid(m_iChild, &status, 0);
        m_iChild = -1;
        result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
        return result;
    }

private:
    [[noreturn]] static void Execute(std::vector<std::string>& arguments, const SSetting& setting) {
        arguments.insert(arguments.begin(), TQC_PROGRAM);
        std::vector<char*> pointers;
        for (std::string& argument : arguments)
            pointers.push_back(argument.data());
        pointers.push_back(nullptr);
        ::signal(SIGINT, SIG_DFL); // it is ignored where the tests run in the background
        ::setenv("LC_ALL", setting.locale.c_str(), 1);
        ::setenv("TERM", "xterm", 1);
        if (::chdir(setting.folder.c_str()) == 0)
            ::execv(pointers[0], pointers.data());
        ::_exit(127);
    }

    static bool Append(int descriptor, std::string& text) {
        char bytes[65536];
        const ssize_t got = ::read(descriptor, bytes, sizeof bytes);
        if (got > 0)
            text.append(bytes, static_cast<std::size_t>(got));
        return got > 0;
    }

    pid_t m_iChild = -1;
    int m_iOutput = -1;
    int m_iErrors = -1;
};

const std::string BOM = "\xEF\xBB\xBF"; ///< in UTF-8

/// Blanks separate the words of a line; '~' is a blank inside a word, and "" an empty word.
struct SCase {
    std::string line;    ///< the arguments; "<NAME" at the end is standard input
    std::string content; ///< of the first file in the line; empty: it exists already, or must not exist
    std::string output;
    std::string errors = ""; ///< a part of standard error, which is empty if this is
    int status = 0;
    std::string made = ""; ///< new files, each as NAME{CONTENT}, and new empty folders, each as NAME/
};

/// "tmp" in the folder is the temporary folder, in which no file may be left.
class CToolTest : public testing::Test {
protected:
    void SetUp() override { ::setenv("TMPDIR", m_folder.MakeFolder("tmp").c_str(), 1); }
    void TearDown() override {
        ::unsetenv("TMPDIR");
        // The library keeps the folder in which it unpacks.
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder.Path("tmp")))
            EXPECT_TRUE(entry.is_directory() && entry.path().string().find("TQD") == std::string::npos)
                << entry.path();
    }

    static std::vector<std::string> Words(const std::string& line) {
        std::vector<std::string> words;
        std::istringstream stream(line);
        for (std::string word; stream >> word; words.push_back(word == "\"\"" ? "" : word))
            std::replace(word.begin(), word.end(), '~', ' ');
        return words;
    }
    SResult Run(const std::string& line, CProgram::SSetting setting = {}) const {
        auto words = Words(line);
        const std::string input =
            !words.empty() && words.back().starts_with('<') ? m_folder.Path(words.back().substr(1)) : "";
        if (!input.empty())
            words.pop_back();
        setting.folder = m_folder.Path();
        setting.input = ::open(input.empty() ? "/dev/null" : input.c_str(), O_RDONLY | O_CLOEXEC);
        const SResult result = CProgram(words, setting).Finish();
        ::close(setting.input);
        return result;
    }
    /// All files, also hidden ones, and all empty folders, sorted.
    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder.Path()))
            if (!entry.is_directory() || std::filesystem::is_empty(entry.path()))
                if (const auto name = entry.path().string().substr(m_folder.Path().size() + 1);
                    !name.starts_with("tmp"))
                    names.push_back(name + (entry.is_directory() ? "/" : ""));
        std::sort(names.begin(), names.end());
        return names;
    }
    void Check(std::span<const SCase> cases) const {
        const auto first = Names();
        for (const SCase& entry : cases) {
            SCOPED_TRACE(testing::PrintToString(entry.line + " of " + entry.content.substr(0, 100)));
            if (!entry.content.empty())
                m_folder.WriteFile(FirstFile(entry.line), entry.content);
            const auto before = Names();
            const SResult result = Run(entry.line);
            EXPECT_EQ(result.status, entry.status) << result.errors;
            EXPECT_EQ(result.output, entry.output);
            EXPECT_EQ(result.errors.empty(), entry.errors.empty()) << result.errors;
            EXPECT_THAT(result.errors, testing::HasSubstr(entry.errors));
            EXPECT_TRUE(entry.errors.empty() || result.errors.starts_with("tqc: ")) << result.errors;
            const bool isFailure = entry.status > 1;
            EXPECT_TRUE(!isFailure || std::ranges::count(result.errors, '\n') == 1) << result.errors;
            EXPECT_EQ(RemoveOthers(before), entry.made);
            RemoveOthers(first);
        }
    }

    CTempFolder m_folder;

private:
    static std::string FirstFile(const std::string& line) {
        for (const std::string& word : Words(line))
            if (word.find('.') != std::string::npos)
                return word;
        throw std::runtime_error("no file in: " + line);
    }
    /// Removes what is not among `names` and returns it as in SCase::made.
    std::string RemoveOthers(const std::vector<std::string>& names) const {
        std::string text;
        std::vector<std::string> added;
        std::ranges::set_difference(Names(), names, std::back_inserter(added));
        for (const std::string& name : added)
            text += name.ends_with('/') ? name : name + '{' + m_folder.ReadFile(name) + '}';
        for (const std::string& name : added)
            std::filesystem::remove_all(m_folder.Path(name.substr(0, name.find('/'))));
        return text;
    }
};

} // namespace NSTQ::Tests
