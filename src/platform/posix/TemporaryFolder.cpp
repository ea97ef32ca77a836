#include "platform/Port.h"
#include "platform/errors/LastError.h"
#include "platform/posix/SystemCall.h"

#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>

namespace NSTQ::Platform::Port {

namespace {

bool IsUsable(const char* path) {
    struct stat status {};
    if (path == nullptr || path[0] != '/' || RetryInterrupted([&] { return ::stat(path, &status); }) != 0 ||
        !S_ISDIR(status.st_mode))
        return false;
    const bool othersMayExchange = (status.st_mode & S_IWOTH) != 0 && (status.st_mode & S_ISVTX) == 0;
    return !othersMayExchange && ::access(path, W_OK | X_OK) == 0;
}

} // namespace

DWORD FindTemporaryFolder(std::string& folder) {
    const std::array candidates{static_cast<const char*>(::secure_getenv(GetTemporaryFolderVariable())), "/tmp"};
    const auto* found = std::find_if(candidates.begin(), candidates.end(), IsUsable);
    if (found == candidates.end())
        return ERROR_PATH_NOT_FOUND;
    folder = *found;
    folder.resize(folder.find_last_not_of('/') + 1);
    return ERROR_SUCCESS;
}

const char* GetTemporaryFolderVariable() {
    return "TMPDIR";
}

std::string GetUserTag() {
    return std::to_string(::geteuid());
}

std::uint32_t GetProcessNumber() {
    return static_cast<std::uint32_t>(::getpid());
}

std::uint32_t MakeRandomNumber() {
    std::uint32_t number = 0;
    if (::getrandom(&number, sizeof number, GRND_NONBLOCK) == sizeof number)
        return number;
    // Early at boot there is none yet. The clock suffices, because the number need not be secret.
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<std::uint32_t>(now.tv_nsec) * 0x9E3779B1U;
}

} // namespace NSTQ::Platform::Port
