#include "platform/Port.h"

#include <signal.h>

#include <utility>

namespace NSTQ::Platform::Port {

namespace {

/// Blocks the signals of the host in this thread, and so in those that it starts.
class CBlockedSignals {
public:
    CBlockedSignals() {
        sigset_t blocked;
        ::sigfillset(&blocked);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT})
            ::sigdelset(&blocked, fault);
        ::pthread_sigmask(SIG_BLOCK, &blocked, &m_before);
    }
    CBlockedSignals(const CBlockedSignals&) = delete;
    CBlockedSignals& operator=(const CBlockedSignals&) = delete;
    ~CBlockedSignals() { ::pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

private:
    sigset_t m_before;
};

} // namespace

std::thread StartThread(std::function<void()> work) {
    const CBlockedSignals blocked;
    return std::thread(std::move(work));
}

} // namespace NSTQ::Platform::Port
