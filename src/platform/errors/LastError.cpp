#include "platform/errors/LastError.h"

namespace NSTQ::Platform {

namespace {
thread_local DWORD lastError = ERROR_SUCCESS;
}

DWORD GetLastError() {
    return lastError;
}

void SetLastError(DWORD code) {
    lastError = code;
}

} // namespace NSTQ::Platform
