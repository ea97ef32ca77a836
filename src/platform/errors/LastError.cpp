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

bool FailWith(DWORD code) {
    SetLastError(code);
    return false;
}

bool Succeeds(DWORD code) {
    return code == ERROR_SUCCESS || FailWith(code);
}

} // namespace NSTQ::Platform
