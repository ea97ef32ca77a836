// The HANDLE of a file contains the file of the port, so that opening a file allocates nothing.
#pragma once

#include "platform/Port.h"

namespace NSTQ::Platform {

/// One is added, so that file 0 is not the null handle.
inline HANDLE HandleOf(Port::TFile file) {
    return reinterpret_cast<HANDLE>(file + 1);
}

/// None if the handle is not that of a file.
inline Port::TFile FileOf(HANDLE handle) {
    return reinterpret_cast<Port::TFile>(handle) - 1;
}

} // namespace NSTQ::Platform
