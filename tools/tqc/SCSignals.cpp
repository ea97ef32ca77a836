#include "SCSignals.h"

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>

namespace NSTQ::Tool {
namespace {

constexpr int endingSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU};

// Atomic and lock-free, so that a handler may look at them.
std::array<std::atomic<const char*>, 8> g_files{};
std::atomic<const char*> g_folder{nullptr};
std::atomic<const termios*> g_terminalSettings{nullptr};
std::atomic<int> g_terminal{-1};
static_assert(std::atomic<const char*>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

/// A tree cannot be walked in a handler, but another program may be started there. It never follows a link.
void RemoveTree(const char* path) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::execl("/bin/rm", "rm", "-rf", "--", path, static_cast<char*>(nullptr));
        ::_exit(1);
    }
    if (child > 0)
        ::waitpid(child, nullptr, 0);
}

void Exchange(const char* before, const char* after) {
    for (auto& file : g_files)
        if (const char* expected = before; file.compare_exchange_strong(expected, after))
            return;
}

/// Only functions that may be called in a handler.
void PutRightAndEnd(int signal) {
    if (const termios* settings = g_terminalSettings.load())
        ::tcsetattr(g_terminal, TCSANOW, settings);
    for (const auto& file : g_files)
        if (const char* path = file.load())
            ::unlink(path);
    if (const char* path = g_folder.load())
        RemoveTree(path);
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

} // namespace

void SCSignals::Handle() {
    for (const int signal : endingSignals) {
        struct sigaction action {};
        ::sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN)
            continue;
        action.sa_handler = PutRightAndEnd;
        ::sigfillset(&action.sa_mask);
        ::sigaction(signal, &action, nullptr);
    }
}

void SCSignals::RemoveFile(const char* path) {
    Exchange(nullptr, path);
}

void SCSignals::ForgetFile(const char* path) {
    Exchange(path, nullptr);
}

void SCSignals::RemoveFolder(const char* path) {
    g_folder = path;
}

void SCSignals::RestoreTerminal(int terminal, const termios* settings) {
    g_terminal = terminal;
    g_terminalSettings = settings;
}

SCSignals::CHeld::CHeld() {
    sigset_t held;
    ::sigemptyset(&held);
    for (const int signal : endingSignals)
        ::sigaddset(&held, signal);
    ::sigprocmask(SIG_BLOCK, &held, &m_before);
}

SCSignals::CHeld::~CHeld() {
    ::sigprocmask(SIG_SETMASK, &m_before, nullptr);
}

} // namespace NSTQ::Tool
