#include "platform/files/CExtractFolder.h"

#include "platform/files/ErrorTable.h"
#include "platform/files/Path.h"
#include "platform/files/SystemCall.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>

namespace NSTQ::Platform {

namespace {

constexpr mode_t folderMode = 0700;
constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// Goes down one level, which is created if it is missing.
CDescriptor EnterFolder(int parent, const std::string& name) {
    const auto open = [&] { return RetryInterrupted([&] { return ::openat(parent, name.c_str(), folderFlags); }); };
    const int there = open();
    if (there >= 0 || errno != ENOENT)
        return CDescriptor(there);
    if (RetryInterrupted([&] { return ::mkdirat(parent, name.c_str(), folderMode); }) != 0 && errno != EEXIST)
        return CDescriptor();
    return CDescriptor(open());
}

} // namespace

CExtractFolder::~CExtractFolder() {
    const CDescriptor file(m_file);
    const CDescriptor folder(m_folder);
}

bool CExtractFolder::Create(const char* folder) {
    std::string path;
    if (!MakeSystemPath(folder, path))
        return false;
    // A separator at the end would make the system follow a link there.
    path.resize(std::max<std::size_t>(path.find_last_not_of('/') + 1, 1));
    if (RetryInterrupted([&] { return ::mkdir(path.c_str(), folderMode); }) != 0)
        return FailFromSystem(path);
    m_folder = RetryInterrupted([&] { return ::open(path.c_str(), folderFlags); });
    return m_folder >= 0 || FailFromSystem(path);
}

/// Closed when one of the levels fails; errno has the reason.
CDescriptor CExtractFolder::OpenFolder(const std::string& path) const {
    int current = ::fcntl(m_folder, F_DUPFD_CLOEXEC, 0);
    for (std::size_t from = 0; current >= 0 && from < path.size();) {
        const std::size_t end = std::min(path.find('/', from), path.size());
        const CDescriptor parent(current);
        current = EnterFolder(parent.Get(), path.substr(from, end - from)).Release();
        from = end + 1;
    }
    return CDescriptor(current);
}

bool CExtractFolder::MakeFolder(const std::string& path) {
    return OpenFolder(path).IsOpen() || FailFromSystem();
}

bool CExtractFolder::MakeFile(const std::string& path) {
    constexpr mode_t fileMode = 0600;
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const std::size_t separator = path.find_last_of('/');
    const CDescriptor folder = OpenFolder(separator == std::string::npos ? "" : path.substr(0, separator));
    if (!folder.IsOpen())
        return FailFromSystem();
    const std::string name = path.substr(separator + 1);
    m_file = MoveAboveStandardStreams(
        RetryInterrupted([&] { return ::openat(folder.Get(), name.c_str(), flags, fileMode); }));
    return m_file >= 0 || FailFromSystem();
}

bool CExtractFolder::Write(std::span<const std::byte> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = RetryInterrupted([&] { return ::write(m_file, bytes.data(), bytes.size()); });
        if (written < 0)
            return FailFromSystem();
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return true;
}

bool CExtractFolder::CloseFile() {
    const int file = m_file;
    m_file = -1;
    // It is closed even if interrupted.
    return ::close(file) == 0 || errno == EINTR || FailFromSystem();
}

} // namespace NSTQ::Platform
