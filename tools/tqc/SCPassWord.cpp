#include "SCPassWord.h"

#include "CDescriptor.h"
#include "CFailure.h"
#include "SCErrorText.h"
#include "SCPathText.h"
#include "SCSignals.h"
#include "SCTerminal.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace NSTQ::Tool {
namespace {

/// More than the maximum of a password in a description, in any code page.
constexpr std::size_t passwordRoom = 1024;

/// Switches off the echo of the terminal during its lifetime.
class CSilentTerminal {
public:
    explicit CSilentTerminal(int terminal) : m_terminal(terminal) {
        const SCSignals::CHeld held;
        m_isSilent = ::tcgetattr(terminal, &m_before) == 0;
        if (!m_isSilent)
            return;
        termios silent = m_before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        ::tcsetattr(terminal, TCSAFLUSH, &silent);
        SCSignals::RestoreTerminal(terminal, &m_before);
    }
    CSilentTerminal(const CSilentTerminal&) = delete;
    CSilentTerminal& operator=(const CSilentTerminal&) = delete;
    ~CSilentTerminal() {
        if (!m_isSilent)
            return;
        const SCSignals::CHeld held;
        ::tcsetattr(m_terminal, TCSAFLUSH, &m_before);
        SCSignals::RestoreTerminal(-1, nullptr);
    }

private:
    int m_terminal;
    bool m_isSilent = false;
    termios m_before{};
};

/// Up to the first line end, which is read too. One byte per call, because the rest may belong to other programs.
bool ReadLine(int descriptor, std::string& line) {
    line.clear();
    for (char c = 0; line.size() < passwordRoom;) {
        const ssize_t got = ::read(descriptor, &c, 1);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return false;
        if (got == 0 || c == '\n')
            break;
        line += c;
    }
    if (line.ends_with('\r'))
        line.pop_back();
    return true;
}

std::string ReadFrom(int descriptor, const std::string& name) {
    std::string line;
    if (descriptor < 0 || !ReadLine(descriptor, line))
        throw CFailure(EExitStatus::NotFound, name, "the password cannot be read: " + SCErrorText::OfSystem(errno));
    return line;
}

} // namespace

std::optional<std::string> SCPassWord::FromOptions(const SOptions& options) {
    if (!options.passwordFile.empty()) {
        const CDescriptor file(::open(options.passwordFile.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
        const std::string line = ReadFrom(file.Get(), options.passwordFile);
        return SCPathText::ToAnsi(line, options.passwordFile, "the password");
    }
    if (options.passwordDescriptor >= 0) {
        const std::string name = "descriptor " + std::to_string(options.passwordDescriptor);
        // Read once: the line is used for all inputs.
        static const std::string line = ReadFrom(options.passwordDescriptor, name);
        return SCPathText::ToAnsi(line, name, "the password");
    }
    return std::nullopt;
}

std::optional<std::string> SCPassWord::Ask(const std::string& file, const std::string& refusal) {
    const CDescriptor terminal(::open("/dev/tty", O_RDWR | O_CLOEXEC));
    if (terminal.Get() < 0)
        return std::nullopt;
    const std::string prompt = refusal + "Password for " + SCTerminal::OnOneLine(file) + ": ";
    std::string line;
    bool read = false;
    {
        const CSilentTerminal silent(terminal.Get());
        read = ::write(terminal.Get(), prompt.data(), prompt.size()) > 0 && ReadLine(terminal.Get(), line);
    }
    if (::write(terminal.Get(), "\n", 1) < 0 || !read || line.empty())
        return std::nullopt;
    return SCPathText::ToAnsi(line, file, "the password");
}

} // namespace NSTQ::Tool
