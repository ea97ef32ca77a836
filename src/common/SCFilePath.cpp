#include "common/SCFilePath.h"

#include "platform/files/ErrorTable.h"
#include "platform/files/Files.h"
#include "platform/files/Path.h"
#include "platform/files/SystemCall.h"

#include <sys/stat.h>

#include <cstring>

namespace NSTQ::NSTQCore {

namespace {

/// Times before 1601 cannot be represented and give 0, like an unknown time.
FILETIME ToFileTime(const timespec& time) {
    constexpr LONGLONG stepsPerSecond = 10'000'000;
    constexpr LONGLONG nanosecondsPerStep = 100;
    constexpr LONGLONG secondsFrom1601To1970 = 11'644'473'600;
    constexpr LONGLONG lastSecond = INT64_MAX / stepsPerSecond - secondsFrom1601To1970 - 1;
    if (time.tv_sec < -secondsFrom1601To1970 || time.tv_sec > lastSecond)
        return {};
    const auto steps = static_cast<std::uint64_t>((time.tv_sec + secondsFrom1601To1970) * stepsPerSecond +
                                                  time.tv_nsec / nanosecondsPerStep);
    return {static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
}

} // namespace

bool SCFilePath::GetFileTime(const char* path, EFileTimeType type, FILETIME& time) {
    time = {};
    std::string systemPath;
    if (!Platform::MakeSystemPath(path, systemPath))
        return false;
    struct stat status {};
    if (Platform::RetryInterrupted([&] { return ::stat(systemPath.c_str(), &status); }) != 0)
        return Platform::FailFromSystem(systemPath);
    switch (type) {
    case FTT_CREATE:
        time = ToFileTime(status.st_ctim);
        return true;
    case FTT_ACCESS:
        time = ToFileTime(status.st_atim);
        return true;
    case FTT_UPDATE:
        time = ToFileTime(status.st_mtim);
        return true;
    }
    return Platform::FailWith(Platform::ERROR_INVALID_PARAMETER);
}

bool SCFilePath::IsAbsolutePath(const char* path) {
    return path != nullptr && (path[0] == '/' || path[0] == '\\');
}

bool SCFilePath::CanUseFileName(const char* path) {
    constexpr std::size_t maxPathLength = 260;
    constexpr std::size_t maxComponentLength = 255;
    std::string systemPath;
    if (path == nullptr || ::strnlen(path, maxPathLength + 1) > maxPathLength ||
        Platform::ConvertToSystemPath(path, systemPath) != Platform::ERROR_SUCCESS)
        return false;
    const std::string name = systemPath.substr(systemPath.find_last_of('/') + 1);
    return !name.empty() && name != "." && name != ".." && name.size() <= maxComponentLength;
}

} // namespace NSTQ::NSTQCore
