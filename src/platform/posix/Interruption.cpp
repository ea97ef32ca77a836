#include "platform/Port.h"
#include "platform/posix/TerminalRestore.h"

#include <poll.h>
#include <pthread.h>
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
std::atomic<int> g_holdingThreads{0};
std::atomic<bool> g_isEnding{false};
static_assert(std::atomic<void (*)()>::is_always_lock_free && std::atomic<const termios*>::is_always_lock_free &&
              std::atomic<int>::is_always_lock_free && std::atomic<bool>::is_always_lock_free);

thread_local int t_holds = 0;
thread_local sigset_t t_beforeHold;

/// Only functions that may be called in a handler.
void PutRightAndEnd(int signal) {
    // No other thread begins a step from now on; those that are in one come to its end.
    g_isEnding = true;
    while (g_holdingThreads > 0)
        ::poll(nullptr, 0, 1);
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
    if (t_holds++ > 0)
        return;
    sigset_t held;
    ::sigemptyset(&held);
    for (const int signal : endingSignals)
        ::sigaddset(&held, signal);
    ::pthread_sigmask(SIG_BLOCK, &held, &t_beforeHold);
    ++g_holdingThreads;
    if (!g_isEnding)
        return;
    --g_holdingThreads;
    for (;;)
        ::pause();
}

void ReleaseInterruption() {
    if (--t_holds > 0)
        return;
    --g_holdingThreads;
    ::pthread_sigmask(SIG_SETMASK, &t_beforeHold, nullptr);
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
