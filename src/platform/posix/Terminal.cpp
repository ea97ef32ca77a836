#include "platform/Port.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/SystemCall.h"
#include "platform/posix/TerminalRestore.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <string_view>

namespace NSTQ::Platform::Port {

namespace {

/// Switches off the echo of the terminal during its lifetime.
class CSilentTerminal {
public:
    explicit CSilentTerminal(int terminal) : m_terminal(terminal) {
        HoldInterruption();
        m_isSilent = ::tcgetattr(terminal, &m_before) == 0;
        if (m_isSilent) {
            termios silent = m_before;
            silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            ::tcsetattr(terminal, TCSAFLUSH, &silent);
            RestoreOnInterruption(terminal, &m_before);
        }
        ReleaseInterruption();
    }
    CSilentTerminal(const CSilentTerminal&) = delete;
    CSilentTerminal& operator=(const CSilentTerminal&) = delete;
    ~CSilentTerminal() {
        if (!m_isSilent)
            return;
        HoldInterruption();
        ::tcsetattr(m_terminal, TCSAFLUSH, &m_before);
        RestoreOnInterruption(-1, nullptr);
        ReleaseInterruption();
    }

private:
    int m_terminal;
    bool m_isSilent = false;
    termios m_before{};
};

bool Show(int terminal, std::string_view text) {
    return RetryInterrupted([&] { return ::write(terminal, text.data(), text.size()); }) > 0;
}

bool ReadLine(int terminal, std::size_t sizeMax, std::string& line) {
    line.clear();
    for (char c = 0; line.size() < sizeMax;) {
        const ssize_t got = RetryInterrupted([&] { return ::read(terminal, &c, 1); });
        if (got < 0)
            return false;
        if (got == 0 || c == '\n')
            break;
        line += c;
    }
    return true;
}

} // namespace

bool IsTerminal(EStream stream) {
    return ::isatty(static_cast<int>(stream)) != 0;
}

int CountTerminalColumns(EStream stream) {
    winsize size{};
    return ::ioctl(static_cast<int>(stream), TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool AskSecret(const std::string& prompt, std::size_t sizeMax, std::string& line) {
    const CDescriptor terminal(RetryInterrupted([] { return ::open("/dev/tty", O_RDWR | O_CLOEXEC); }));
    if (!terminal.IsOpen())
        return false;
    bool isRead = false;
    {
        const CSilentTerminal silent(terminal.Get());
        isRead = Show(terminal.Get(), prompt) && ReadLine(terminal.Get(), sizeMax, line);
    }
    // The line end that was not shown.
    return Show(terminal.Get(), "\n") && isRead;
}

} // namespace NSTQ::Platform::Port
