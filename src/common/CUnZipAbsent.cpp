// Replaces unpacking in a build without the zip provider.
#include "common/CUnZip.h"

#include "platform/errors/LastError.h"
#include "platform/files/Files.h"

namespace NSTQ::NSTQCore {

CUnZip::CUnZip(const char*, const char*) {}

CUnZip::~CUnZip() = default;

bool CUnZip::Uncompress(const char*) {
    return Platform::FailWith(Platform::ERROR_NOT_SUPPORTED);
}

} // namespace NSTQ::NSTQCore
