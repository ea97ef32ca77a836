#include "CTemporaryFile.h"

#include "CFailure.h"
#include "SCErrorText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <random>
#include <string_view>

namespace NSTQ::Tool {
namespace {

constexpr int ENDING_SIGNALS[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXCPU};

/// The path that a handler removes, or null. Atomic and lock-free, so that a handler may look at it.
std::atomic<const char*> g_pPath{nullptr};
static_assert(std::atomic<const char*>::is_always_lock_free);

/// Only functions that may be called in a handler.
void RemoveAndEnd(int signal) {
    if (const char* path = g_pPath.load())
        ::unlink(path);
    ::signal(signal, SIG_DFL);
    ::raise(signal);
}

/// While it lives the signals wait, so that the file and what is known of it change in one step.
class CSignalsHeld {
public:
    CSignalsHeld() {
        sigset_t held;
        ::sigemptyset(&held);
        for (const int signal : ENDING_SIGNALS)
            ::sigaddset(&held, signal);
        ::sigprocmask(SIG_BLOCK, &held, &m_before);
    }
    CSignalsHeld(const CSignalsHeld&) = delete;
    CSignalsHeld& operator=(const CSignalsHeld&) = delete;
    ~CSignalsHeld() { ::sigprocmask(SIG_SETMASK, &m_before, nullptr); }

private:
    sigset_t m_before;
};

/// A hidden name beside the target that says what it belongs to.
std::string MakeName(const std::string& target, std::random_device& random) {
    constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz0123456789";
    constexpr std::size_t nameRoom = 200;
    const std::size_t folder = target.find_last_of('/') + 1;
    std::string path = target.substr(0, folder) + '.' + target.substr(folder, nameRoom) + ".tqc-";
    for (int i = 0; i < 8; ++i)
        path += letters[random() % letters.size()];
    return path;
}

} // namespace

void CTemporaryFile::HandleSignals() {
    for (const int signal : ENDING_SIGNALS) {
        struct sigaction action {};
        ::sigaction(signal, nullptr, &action);
        if (action.sa_handler == SIG_IGN)
            continue;
        action.sa_handler = RemoveAndEnd;
        ::sigfillset(&action.sa_mask);
        ::sigaction(signal, &action, nullptr);
    }
}

CTemporaryFile::CTemporaryFile(const std::string& target) : m_strTarget(target) {
    Create();
    TakeOverTarget();
}

void CTemporaryFile::Create() {
    constexpr int attempts = 100;
    constexpr mode_t anybodyLessUmask = 0666;
    std::random_device random;
    const CSignalsHeld held;
    for (int attempt = 0; attempt < attempts && m_iDescriptor < 0; ++attempt) {
        m_strPath = MakeName(m_strTarget, random);
        m_iDescriptor = ::open(m_strPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, anybodyLessUmask);
        if (m_iDescriptor < 0 && errno != EEXIST)
            break;
    }
    if (m_iDescriptor < 0) {
        m_strPath.clear();
        throw CFailure(ES_OUTPUT_FAILED, m_strTarget,
                       SCErrorText::OfSystem(errno) + "; its folder must exist and take new files");
    }
    g_pPath = m_strPath.c_str();
}

/// The owner goes first, because a change of owner may take bits from the mode. Who may not give files away keeps
/// the new one.
void CTemporaryFile::TakeOverTarget() {
    struct stat status {};
    if (::stat(m_strTarget.c_str(), &status) != 0)
        return;
    constexpr mode_t permissions = 07777;
    const bool owned = ::fchown(m_iDescriptor, status.st_uid, status.st_gid) == 0;
    ::fchmod(m_iDescriptor, status.st_mode & (owned ? permissions : mode_t{0777}));
}

void CTemporaryFile::Replace() {
    // Some file systems have no such call; what they do at the end of a program has to do there.
    if (::fsync(m_iDescriptor) != 0 && errno != EINVAL && errno != ENOTSUP)
        throw CFailure(ES_OUTPUT_FAILED, m_strTarget, SCErrorText::OfSystem(errno));
    const CSignalsHeld held;
    if (::rename(m_strPath.c_str(), m_strTarget.c_str()) != 0)
        throw CFailure(ES_OUTPUT_FAILED, m_strTarget, SCErrorText::OfSystem(errno));
    g_pPath = nullptr;
    m_strPath.clear();
}

CTemporaryFile::~CTemporaryFile() {
    if (m_iDescriptor >= 0)
        ::close(m_iDescriptor);
    if (m_strPath.empty())
        return;
    const CSignalsHeld held;
    ::unlink(m_strPath.c_str());
    g_pPath = nullptr;
}

} // namespace NSTQ::Tool
