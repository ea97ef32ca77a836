#include "platform/errors/LastError.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/ErrorTable.h"
#include "platform/posix/SystemCall.h"

#include <sys/stat.h>

#include <array>
#include <climits>
#include <ctime>

namespace NSTQ::Platform::Port {

namespace {

constexpr LONGLONG stepsPerSecond = 10'000'000;
constexpr LONGLONG nanosecondsPerStep = 100;
constexpr LONGLONG secondsFrom1601To1970 = 11'644'473'600;

FILETIME ToFileTime(const timespec& time) {
    constexpr LONGLONG lastSecond = INT64_MAX / stepsPerSecond - secondsFrom1601To1970 - 1;
    if (time.tv_sec < -secondsFrom1601To1970 || time.tv_sec > lastSecond)
        return {};
    const auto steps = static_cast<std::uint64_t>((time.tv_sec + secondsFrom1601To1970) * stepsPerSecond +
                                                  time.tv_nsec / nanosecondsPerStep);
    return {static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
}

EKind KindOf(mode_t mode) {
    switch (mode & S_IFMT) {
    case S_IFREG:
        return EKind::Regular;
    case S_IFDIR:
        return EKind::Folder;
    case S_IFLNK:
        return EKind::Link;
    case S_IFIFO:
        return EKind::Pipe;
    case S_IFCHR:
    case S_IFBLK:
        return EKind::Device;
    default:
        return EKind::Other;
    }
}

SStatus Convert(const struct stat& status) {
    constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    return {.kind = KindOf(status.st_mode),
            .isReadOnly = (status.st_mode & anyWrite) == 0,
            .size = status.st_size,
            .device = status.st_dev,
            .number = status.st_ino,
            .createTime = ToFileTime(status.st_ctim),
            .accessTime = ToFileTime(status.st_atim),
            .updateTime = ToFileTime(status.st_mtim)};
}

/// `call` fills in its argument as stat does.
template <class TCall>
DWORD Ask(SStatus& result, const std::string& path, TCall call) {
    struct stat status {};
    if (RetryInterrupted([&] { return call(&status); }) != 0)
        return path.empty() ? LastCode() : LastCode(path);
    result = Convert(status);
    return ERROR_SUCCESS;
}

/// The system does not follow the links of other users in a folder that everybody can write to, such as /tmp, but it
/// does not notice when this program does.
bool IsPlantedLink(const std::string& link) {
    constexpr mode_t shared = S_ISVTX | S_IWOTH;
    struct stat own {};
    struct stat folder {};
    const std::size_t nameAt = link.find_last_of('/') + 1;
    return ::lstat(link.c_str(), &own) == 0 && own.st_uid != ::geteuid() &&
           ::stat(nameAt == 0 ? "." : link.substr(0, nameAt).c_str(), &folder) == 0 &&
           (folder.st_mode & shared) == shared && own.st_uid != folder.st_uid;
}

} // namespace

DWORD GetStatus(const std::string& path, SStatus& status) {
    return Ask(status, path, [&](struct stat* result) { return ::stat(path.c_str(), result); });
}

DWORD GetLinkStatus(const std::string& path, SStatus& status) {
    return Ask(status, path, [&](struct stat* result) { return ::lstat(path.c_str(), result); });
}

DWORD GetStatus(TFile file, SStatus& status) {
    return Ask(status, "", [&](struct stat* result) { return ::fstat(DescriptorOf(file), result); });
}

DWORD CheckAccess(const std::string& path, EAccess access) {
    constexpr int modes[] = {R_OK, W_OK, R_OK | W_OK};
    return ::access(path.c_str(), modes[static_cast<std::size_t>(access)]) == 0 ? ERROR_SUCCESS : LastCode(path);
}

bool ReadLink(const std::string& path, std::string& next, bool& isPlanted) {
    std::array<char, PATH_MAX> link{};
    const ssize_t length = ::readlink(path.c_str(), link.data(), link.size());
    if (length < 0)
        return false;
    isPlanted = IsPlantedLink(path);
    const std::string_view target(link.data(), static_cast<std::size_t>(length));
    next = target.starts_with('/') ? "" : path.substr(0, path.find_last_of('/') + 1);
    next += target;
    return true;
}

bool ToLocalTime(const FILETIME& time, SLocalTime& local) {
    const auto steps = static_cast<LONGLONG>(std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
    const auto seconds = static_cast<std::time_t>(steps / stepsPerSecond - secondsFrom1601To1970);
    std::tm fields{};
    if (steps == 0 || ::localtime_r(&seconds, &fields) == nullptr)
        return false;
    local = {fields.tm_year + 1900,
             fields.tm_mon + 1,
             fields.tm_mday,
             fields.tm_hour,
             fields.tm_min,
             fields.tm_sec,
             static_cast<int>(fields.tm_gmtoff / 60)};
    return true;
}

} // namespace NSTQ::Platform::Port
