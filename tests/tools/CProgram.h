// A program that a test starts: its arguments, its folder, and its output.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace NSTQ::Tests {

struct SResult {
    std::string output;
    std::string errors;
    int status = -1; ///< the exit status, or minus the signal that ended it
};

class CProgram {
public:
    struct SSetting {
        std::string folder = ".";
        int output = -1; ///< a descriptor for standard output; -1: a pipe to the test
        int errors = -1; ///< likewise for standard error
        std::string locale = "C.UTF-8";
        int input = -1; ///< a descriptor for standard input; -1: that of the test
    };

    CProgram(std::vector<std::string> arguments, const SSetting& setting) {
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

} // namespace NSTQ::Tests
