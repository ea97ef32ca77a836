#include "platform/Port.h"
#include "platform/files/Files.h"
#include "platform/files/Path.h"

namespace NSTQ::Platform {

bool DeleteFileA(const char* path) {
    std::string systemPath;
    return MakeSystemPath(path, systemPath) && Succeeds(Port::RemoveFile(systemPath));
}

} // namespace NSTQ::Platform
