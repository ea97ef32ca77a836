#include "platform/errors/LastError.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/ErrorTable.h"
#include "platform/posix/SystemCall.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>

namespace NSTQ::Platform::Port {

namespace {

constexpr mode_t userOnly = 0700;
constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

} // namespace

DWORD MakeFolder(const std::string& path) {
    constexpr mode_t anybodyLessUmask = 0777;
    return RetryInterrupted([&] { return ::mkdir(path.c_str(), anybodyLessUmask); }) == 0 ? ERROR_SUCCESS
                                                                                          : LastCode(path);
}

DWORD MakePrivateFolder(const std::string& path) {
    constexpr mode_t anybodyElse = 0077;
    if (RetryInterrupted([&] { return ::mkdir(path.c_str(), userOnly); }) == 0)
        return ERROR_SUCCESS;
    struct stat status {};
    if (errno != EEXIST || RetryInterrupted([&] { return ::lstat(path.c_str(), &status); }) != 0)
        return LastCode(path);
    if (!S_ISDIR(status.st_mode) || status.st_uid != ::geteuid() || (status.st_mode & anybodyElse) != 0)
        return ERROR_ACCESS_DENIED;
    return ERROR_SUCCESS;
}

DWORD MakeRootFolder(const std::string& path, TFile& folder) {
    // A separator at the end would make the system follow a link there.
    const std::string name = path.substr(0, std::max<std::size_t>(path.find_last_not_of('/') + 1, 1));
    if (RetryInterrupted([&] { return ::mkdir(name.c_str(), userOnly); }) != 0)
        return LastCode(name);
    folder = RetryInterrupted([&] { return ::open(name.c_str(), folderFlags); });
    return folder < 0 ? LastCode(name) : ERROR_SUCCESS;
}

DWORD EnterFolder(TFile parent, const std::string& name, TFile& folder) {
    const int above = DescriptorOf(parent);
    const auto open = [&] { return RetryInterrupted([&] { return ::openat(above, name.c_str(), folderFlags); }); };
    folder = open();
    if (folder >= 0)
        return ERROR_SUCCESS;
    if (errno != ENOENT)
        return LastCode();
    if (RetryInterrupted([&] { return ::mkdirat(above, name.c_str(), userOnly); }) != 0 && errno != EEXIST)
        return LastCode();
    folder = open();
    return folder < 0 ? LastCode() : ERROR_SUCCESS;
}

DWORD MakeFileIn(TFile folder, const std::string& name, TFile& file) {
    constexpr mode_t userFile = 0600;
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    file = MoveAboveStandardStreams(
        RetryInterrupted([&] { return ::openat(DescriptorOf(folder), name.c_str(), flags, userFile); }));
    return file < 0 ? LastCode() : ERROR_SUCCESS;
}

DWORD RemoveFile(const std::string& path) {
    constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    struct stat status {};
    if (RetryInterrupted([&] { return ::lstat(path.c_str(), &status); }) != 0)
        return LastCode(path);
    if (S_ISDIR(status.st_mode) || (!S_ISLNK(status.st_mode) && (status.st_mode & anyWrite) == 0))
        return ERROR_ACCESS_DENIED;
    return RetryInterrupted([&] { return ::unlink(path.c_str()); }) == 0 ? ERROR_SUCCESS : LastCode(path);
}

} // namespace NSTQ::Platform::Port
