// The HANDLE of a file contains its descriptor, so that opening a file allocates nothing.
#pragma once

#include "tqcAccess/Types.h"

namespace NSTQ::Platform {

/// One is added, so that descriptor 0 is not the null handle.
inline HANDLE HandleOfDescriptor(int descriptor) {
    return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(descriptor) + 1);
}

/// -1, which every system call rejects as a bad descriptor, if the handle is not that of a file.
inline int DescriptorOfHandle(HANDLE file) {
    const auto value = reinterpret_cast<std::uintptr_t>(file);
    return value == 0 || value > 0x7FFFFFFF ? -1 : static_cast<int>(value - 1);
}

} // namespace NSTQ::Platform
