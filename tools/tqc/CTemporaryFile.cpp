#include "CTemporaryFile.h"

#include "CFailure.h"
#include "SCErrorText.h"
#include "SCSignals.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <random>
#include <string_view>

namespace NSTQ::Tool {
namespace {

constexpr mode_t ownerAlone = 0600;

mode_t ModeOfNewFiles() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

/// A hidden name in the folder of the target that shows what it belongs to.
std::string MakeName(const std::string& target, std::random_device& random) {
    constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz0123456789";
    constexpr std::size_t nameRoom = 200;
    const std::size_t folder = target.find_last_of('/') + 1;
    std::string path = target.substr(0, folder) + '.' + target.substr(folder, nameRoom) + ".tqc-";
    for (int i = 0; i < 8; ++i)
        path += letters[random() % letters.size()];
    return path;
}

/// A path of the descriptor that can be linked; unlike an empty path this needs no privilege.
std::string NameOfDescriptor(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

bool Link(int descriptor, const std::string& path) {
    return ::linkat(AT_FDCWD, NameOfDescriptor(descriptor).c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0;
}

} // namespace

CTemporaryFile::CTemporaryFile(const std::string& target) : m_target(target) {
    if (!CreateNameless())
        CreateNamed();
    TakeOverTarget();
}

/// False if the file system has no such files, or they could not be given a name later.
bool CTemporaryFile::CreateNameless() {
    const std::size_t folder = m_target.find_last_of('/');
    const std::string path = folder == std::string::npos ? "." : m_target.substr(0, folder + 1);
    m_descriptor = ::open(path.c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, ownerAlone);
    if (m_descriptor >= 0 && ::access(NameOfDescriptor(m_descriptor).c_str(), F_OK) != 0) {
        ::close(m_descriptor);
        m_descriptor = -1;
    }
    return m_descriptor >= 0;
}

void CTemporaryFile::CreateNamed() {
    const SCSignals::CHeld held;
    if (!TryNames(&CTemporaryFile::CreateAtPath))
        Fail(errno, "; its folder must exist and be writable");
}

/// Calls `create` with hidden names until one is free; then registers the file with the signal handler.
bool CTemporaryFile::TryNames(bool (CTemporaryFile::*create)()) {
    constexpr int attempts = 100;
    std::random_device random;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        m_path = MakeName(m_target, random);
        if ((this->*create)()) {
            SCSignals::RemoveFile(m_path.c_str());
            return true;
        }
        if (errno != EEXIST)
            break;
    }
    m_path.clear();
    return false;
}

bool CTemporaryFile::CreateAtPath() {
    m_descriptor = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, ownerAlone);
    return m_descriptor >= 0;
}

bool CTemporaryFile::LinkToPath() {
    return Link(m_descriptor, m_path);
}

/// The owner first, because changing it may clear bits of the mode. Without the permission to change the owner the
/// file belongs to this user.
void CTemporaryFile::TakeOverTarget() {
    struct stat status {};
    m_mode = ModeOfNewFiles();
    if (::stat(m_target.c_str(), &status) != 0)
        return;
    constexpr mode_t permissions = 07777;
    const bool owned = ::fchown(m_descriptor, status.st_uid, status.st_gid) == 0;
    m_mode = status.st_mode & (owned ? permissions : mode_t{0777});
}

void CTemporaryFile::Replace() {
    // Some file systems do not support this call; then closing the file has to suffice.
    if (::fsync(m_descriptor) != 0 && errno != EINVAL && errno != ENOTSUP)
        Fail(errno);
    if (m_isPlaced)
        return;
    const SCSignals::CHeld held;
    if (::fchmod(m_descriptor, m_mode) != 0)
        Fail(errno);
    if (m_path.empty() && Link(m_descriptor, m_target)) {
        m_isPlaced = true;
        return;
    }
    if (m_path.empty() && (errno != EEXIST || !TryNames(&CTemporaryFile::LinkToPath)))
        Fail(errno);
    if (::rename(m_path.c_str(), m_target.c_str()) != 0)
        Fail(errno);
    Forget();
    m_isPlaced = true;
}

void CTemporaryFile::Forget() {
    SCSignals::ForgetFile(m_path.c_str());
    m_path.clear();
}

void CTemporaryFile::Fail(int error, const char* hint) const {
    throw CFailure(EExitStatus::OutputFailed, m_target, SCErrorText::OfSystem(error) + hint);
}

CTemporaryFile::~CTemporaryFile() {
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    if (m_path.empty())
        return;
    const SCSignals::CHeld held;
    ::unlink(m_path.c_str());
    Forget();
}

} // namespace NSTQ::Tool
