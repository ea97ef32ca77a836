// A file's HANDLE is its descriptor in disguise, so that opening a file allocates nothing.
#pragma once

#include "tqcAccess/Types.h"

namespace NSTQ::Platform {

/// Descriptor 0 must not look like the null handle, hence the one added.
inline HANDLE HandleOfDescriptor(int descriptor) {
    return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(descriptor) + 1);
}

/// -1, which every system call refuses as a bad descriptor, for what is no file's handle.
inline int DescriptorOfHandle(HANDLE file) {
    const auto value = reinterpret_cast<std::uintptr_t>(file);
    return value == 0 || value > 0x7FFFFFFF ? -1 : static_cast<int>(value - 1);
}

} // namespace NSTQ::Platform
