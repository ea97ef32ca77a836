#include "common/SCFilePath.h"

#include "platform/Port.h"
#include "platform/errors/LastError.h"
#include "platform/files/Path.h"

#include <cstring>

namespace NSTQ::NSTQCore {

bool SCFilePath::GetFileTime(const char* path, EFileTimeType type, FILETIME& time) {
    time = {};
    std::string systemPath;
    Platform::Port::SStatus status;
    if (!Platform::MakeSystemPath(path, systemPath) ||
        !Platform::Succeeds(Platform::Port::GetStatus(systemPath, status)))
        return false;
    switch (type) {
    case FTT_CREATE:
        time = status.createTime;
        return true;
    case FTT_ACCESS:
        time = status.accessTime;
        return true;
    case FTT_UPDATE:
        time = status.updateTime;
        return true;
    }
    return Platform::FailWith(Platform::ERROR_INVALID_PARAMETER);
}

bool SCFilePath::IsAbsolutePath(const char* path) {
    return path != nullptr && (path[0] == '/' || path[0] == '\\' || Platform::Port::BeginsWithDrive(path));
}

bool SCFilePath::CanUseFileName(const char* path) {
    constexpr std::size_t maxPathLength = 260;
    constexpr std::size_t maxComponentLength = 255;
    std::string systemPath;
    if (path == nullptr || ::strnlen(path, maxPathLength + 1) > maxPathLength ||
        Platform::ConvertToSystemPath(path, systemPath) != Platform::ERROR_SUCCESS)
        return false;
    const std::string name = systemPath.substr(systemPath.find_last_of('/') + 1);
    return !name.empty() && name != "." && name != ".." && name.size() <= maxComponentLength &&
           Platform::Port::IsPlainName(name);
}

} // namespace NSTQ::NSTQCore
