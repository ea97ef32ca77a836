#include "platform/files/ErrorTable.h"
#include "platform/files/Files.h"
#include "platform/files/Path.h"
#include "platform/files/SystemCall.h"

#include <sys/stat.h>
#include <unistd.h>

namespace NSTQ::Platform {

bool DeleteFileA(const char* path) {
    constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    std::string systemPath;
    struct stat status {};
    if (!MakeSystemPath(path, systemPath))
        return false;
    if (RetryInterrupted([&] { return ::lstat(systemPath.c_str(), &status); }) != 0)
        return FailFromSystem(systemPath);
    if (S_ISDIR(status.st_mode) || (!S_ISLNK(status.st_mode) && (status.st_mode & anyWrite) == 0))
        return FailWith(ERROR_ACCESS_DENIED);
    if (RetryInterrupted([&] { return ::unlink(systemPath.c_str()); }) != 0)
        return FailFromSystem(systemPath);
    return true;
}

} // namespace NSTQ::Platform
