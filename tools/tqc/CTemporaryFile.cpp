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

CTemporaryFile::CTemporaryFile(const std::string& target) : m_strTarget(target) {
    Create();
    TakeOverTarget();
}

void CTemporaryFile::Create() {
    constexpr int attempts = 100;
    constexpr mode_t anybodyLessUmask = 0666;
    std::random_device random;
    const SCSignals::CHeld held;
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
    SCSignals::RemoveFile(m_strPath.c_str());
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
    const SCSignals::CHeld held;
    if (::rename(m_strPath.c_str(), m_strTarget.c_str()) != 0)
        throw CFailure(ES_OUTPUT_FAILED, m_strTarget, SCErrorText::OfSystem(errno));
    SCSignals::RemoveFile(nullptr);
    m_strPath.clear();
}

CTemporaryFile::~CTemporaryFile() {
    if (m_iDescriptor >= 0)
        ::close(m_iDescriptor);
    if (m_strPath.empty())
        return;
    const SCSignals::CHeld held;
    ::unlink(m_strPath.c_str());
    SCSignals::RemoveFile(nullptr);
}

} // namespace NSTQ::Tool
