#include "platform/Port.h"
#include "platform/posix/ErrorTable.h"
#include "platform/posix/NewFileMode.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>

namespace NSTQ::Platform::Port {

namespace {

/// A file with the descriptor of a closed standard stream would receive the data for that stream. So closed ones are
/// opened in a way that makes their use fail, so that the problem is noticed.
void FillStandardStreams() {
    constexpr int modes[] = {O_WRONLY, O_RDONLY, O_RDWR};
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (::fcntl(stream, F_GETFD) < 0)
            ::open("/dev/null", modes[stream]);
}

/// "ja_JP.SJIS@modifier" has the encoding "SJIS".
std::string_view EncodingOf(std::string_view locale) {
    const std::size_t dot = locale.find('.');
    if (dot == std::string_view::npos)
        return {};
    const std::string_view rest = locale.substr(dot + 1);
    return rest.substr(0, rest.find('@'));
}

} // namespace

void PrepareProgram() {
    FillStandardStreams();
    ::signal(SIGPIPE, SIG_IGN);
    ::signal(SIGXFSZ, SIG_IGN);
    ModeOfNewFiles();
}

std::vector<std::string> GetArguments(int argc, const char* const* argv) {
    return {argv, argv + argc};
}

std::string GetLocaleEncoding() {
    for (const char* variable : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const char* const value = std::getenv(variable);
        if (value != nullptr && *value != '\0')
            return std::string(EncodingOf(value));
    }
    return {};
}

DWORD CodeOfErrno(int error) {
    return ErrorCodeFromSystem(error);
}

} // namespace NSTQ::Platform::Port
