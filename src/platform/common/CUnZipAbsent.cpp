// What stands in for the zip provider in a build without it.
#include "platform/common/CUnZip.h"

namespace NSTQ::NSTQCore {

CUnZip::CUnZip(const char*, const char*) {}

CUnZip::~CUnZip() = default;

bool CUnZip::Uncompress(const char*) {
    return false;
}

} // namespace NSTQ::NSTQCore
