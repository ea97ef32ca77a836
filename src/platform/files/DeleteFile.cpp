#include "platform/files/ErrorTable.h"
#include "platform/files/Files.h"
#include "platform/files/Path.h"
#include "platform/files/SystemCall.h"

#include <sys/stat.h>
#include <unistd.h>

namespace NSTQ::Platform {

namespace {

bool ReadStatus(const std::string& path, struct stat& status) {
    return RetryInterrupted([&] { return ::lstat(path.c_str(), &status); }) == 0;
}

} // namespace

bool DeleteFileA(const char* path) {
    constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    std::string systemPath;
    struct stat status {};
    if (!MakeSystemPath(path, systemPath))
        return false;
    if (!ReadStatus(systemPath, status))
        return FailFromSystem(systemPath);
    if (S_ISDIR(status.st_mode) || (!S_ISLNK(status.st_mode) && (status.st_mode & anyWrite) == 0))
        return FailWith(ERROR_ACCESS_DENIED);
    if (RetryInterrupted([&] { return ::unlink(systemPath.c_str()); }) != 0)
        return FailFromSystem(systemPath);
    return true;
}

bool RemoveDirectoryA(const char* path) {
    std::string systemPath;
    if (!MakeSystemPath(path, systemPath))
        return false;
    if (RetryInterrupted([&] { return ::rmdir(systemPath.c_str()); }) == 0)
        return true;
    const int error = errno;
    // Either answer may stand for a folder that is not empty.
    if (error == EEXIST)
        return FailWith(ERROR_DIR_NOT_EMPTY);
    // The same number tells of a link or file in the folder's place and of one on the way to it.
    if (struct stat status{}; error == ENOTDIR && ReadStatus(systemPath, status))
        return FailWith(ERROR_ACCESS_DENIED);
    return FailWith(PathErrorCodeFromSystem(error, systemPath));
}

} // namespace NSTQ::Platform
