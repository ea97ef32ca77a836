#include "COutputTarget.h"

#include "CFailure.h"
#include "SCErrorText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <string_view>

namespace NSTQ::Tool {
namespace {

constexpr std::string_view descriptors = "/dev/fd/";

/// The number in names of open descriptors, such as /dev/fd/3; -1 for other names.
int DescriptorOfName(std::string_view name) {
    if (name.empty() || name == "/dev/stdout")
        return STDOUT_FILENO;
    if (name == "/dev/stderr")
        return STDERR_FILENO;
    int descriptor = -1;
    if (name.starts_with(descriptors))
        std::from_chars(name.data() + descriptors.size(), name.data() + name.size(), descriptor);
    return descriptor;
}

/// Replacing a file needs no write permission for it, but the protection is respected nevertheless.
void CheckReplaceable(const std::string& path, const struct stat& status) {
    constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    if (S_ISDIR(status.st_mode))
        throw CFailure(EExitStatus::OutputFailed, path, "is a folder; give the name of a file in it");
    if ((status.st_mode & anyWrite) == 0 || ::access(path.c_str(), W_OK) != 0)
        throw CFailure(EExitStatus::OutputFailed, path, "the file exists and is not writable; try another name");
}

/// Whether another user may have planted the link: in a folder that everybody can write to, such as /tmp, the system
/// does not follow the links of other users, but it does not notice that this program does.
bool IsPlanted(const std::string& link) {
    constexpr mode_t shared = S_ISVTX | S_IWOTH;
    struct stat own {};
    struct stat folder {};
    const std::size_t nameAt = link.find_last_of('/') + 1;
    return ::lstat(link.c_str(), &own) == 0 && own.st_uid != ::geteuid() &&
           ::stat(nameAt == 0 ? "." : link.substr(0, nameAt).c_str(), &folder) == 0 &&
           (folder.st_mode & shared) == shared && own.st_uid != folder.st_uid;
}

} // namespace

bool COutputTarget::IsStandardOutputName(const std::string& name) {
    return name.empty() || name == "-" || name == "/dev/stdout";
}

std::string COutputTarget::FollowLinks(std::string path) {
    constexpr int linksMax = 40;
    for (int i = 0; i < linksMax; ++i) {
        std::array<char, PATH_MAX> link{};
        const ssize_t length = ::readlink(path.c_str(), link.data(), link.size());
        if (length < 0)
            return path;
        if (IsPlanted(path))
            throw CFailure(
                EExitStatus::OutputFailed, path,
                "a link that belongs to another user, in a folder that everybody can write to; give the file itself");
        const std::string next(link.data(), static_cast<std::size_t>(length));
        if (next.starts_with('/'))
            path = next;
        else
            path.replace(path.find_last_of('/') + 1, std::string::npos, next);
    }
    throw CFailure(EExitStatus::OutputFailed, path, SCErrorText::OfSystem(ELOOP));
}

COutputTarget::COutputTarget(const std::string& name)
    : m_name(IsStandardOutputName(name) ? "" : name), m_descriptor(DescriptorOfName(m_name)) {
    if (m_descriptor >= 0)
        return;
    const std::string path = FollowLinks(m_name);
    struct stat status {};
    const bool exists = ::stat(path.c_str(), &status) == 0;
    if (exists && (S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode) || S_ISFIFO(status.st_mode))) {
        OpenDevice(path);
        return;
    }
    if (exists)
        CheckReplaceable(path, status);
    m_temporary = std::make_unique<CTemporaryFile>(path);
    m_descriptor = m_temporary->Descriptor();
}

COutputTarget::~COutputTarget() {
    if (m_isOwned)
        ::close(m_descriptor);
}

void COutputTarget::OpenDevice(const std::string& path) {
    // With O_CREAT the system rejects a pipe that another user has planted.
    constexpr mode_t owner = S_IRUSR | S_IWUSR;
    m_descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, owner);
    if (m_descriptor < 0)
        throw CFailure(EExitStatus::OutputFailed, m_name, SCErrorText::OfSystem(errno));
    m_isOwned = true;
}

std::string COutputTarget::DescriptorPath() const {
    return std::string(descriptors) + std::to_string(m_descriptor);
}

std::string COutputTarget::Describe() const {
    return IsStandardOutput() ? "standard output" : m_name;
}

bool COutputTarget::Write(const char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t written = ::write(m_descriptor, bytes, size);
        if (written < 0 && errno == EPIPE)
            return false;
        if (written < 0 && errno != EINTR)
            throw CFailure(EExitStatus::OutputFailed, Describe(), SCErrorText::OfSystem(errno));
        const std::size_t done = written < 0 ? 0 : static_cast<std::size_t>(written);
        bytes += done;
        size -= done;
    }
    return true;
}

void COutputTarget::Replace() {
    if (m_temporary)
        m_temporary->Replace();
}

} // namespace NSTQ::Tool
