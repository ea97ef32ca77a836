#include "platform/Port.h"

#include <climits>

namespace NSTQ::Platform::Port {

std::size_t GetMaxPathLength() {
    return PATH_MAX;
}

std::string ToPortPath(std::string path) {
    return path;
}

bool IsBackslashSeparator() {
    return false;
}

std::string ToComparableName(std::string name) {
    return name;
}

bool BeginsWithDrive(std::string_view /*path*/) {
    return false;
}

bool IsPlainName(std::string_view /*name*/) {
    return true;
}

} // namespace NSTQ::Platform::Port
