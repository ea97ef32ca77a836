#include "platform/Port.h"
#include "platform/posix/TerminalRestore.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>

namespace NSTQ::Platform::Port {

namespace {

constexpr int endingSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU};

// Atomic and lock-free, so that a handler may look at them.
std::atomic<void (*)()> g_cleanUp{nullptr};
std::atomic<const termios*> g_terminalSettings{nullptr};
std::atomic<int> g_terminal{-1};
static_assert(std::atomic<void (*)()>::is_always_lock_free && std::atomic<const termios*>::is_always_lock_free &&
              std::atomic<int>::is_always_lock_free);

int g_holds = 0;
sigset_t g_beforeHold;

/// Only functions that may be called in a handler.
void PutRightAndEnd(int signal) {
    if (const termios* settings = g_terminalSettings.load())
        ::tcsetattr(g_terminal, TCSANOW, settings);
    if (void (*const cleanUp)() = g_cleanUp.load())
        cleanUp();
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

} // namespace

void RestoreOnInterruption(int terminal, const termios* settings) {
    g_terminal = terminal;
    g_terminalSettings = settings;
}

void HandleInterruption(void (*cleanUp)()) {
    g_cleanUp = cleanUp;
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

void HoldInterruption() {
    if (g_holds++ > 0)
        return;
    sigset_t held;
    ::sigemptyset(&held);
    for (const int signal : endingSignals)
        ::sigaddset(&held, signal);
    ::sigprocmask(SIG_BLOCK, &held, &g_beforeHold);
}

void ReleaseInterruption() {
    if (--g_holds == 0)
        ::sigprocmask(SIG_SETMASK, &g_beforeHold, nullptr);
}

void Discard(const char* path) noexcept {
    ::unlink(path);
}

/// A tree cannot be walked in a handler, but another program may be started there. It never follows a link.
void DiscardTree(const char* path) noexcept {
    const pid_t child = ::fork();
    if (child == 0) {
        ::execl("/bin/rm", "rm", "-rf", "--", path, static_cast<char*>(nullptr));
        ::_exit(1);
    }
    if (child > 0)
        ::waitpid(child, nullptr, 0);
}

} // namespace NSTQ::Platform::Port
