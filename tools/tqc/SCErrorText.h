// Texts of the error codes of the library and of the system.
#pragma once

#include "tqcAccess/Types.h"

#include <string>

namespace NSTQ::Tool {

class SCErrorText {
public:
    static constexpr DWORD brokenPipe = 109;

    static std::string OfLibrary(DWORD code);
    /// `error` is an errno value.
    static std::string OfSystem(int error);
};

} // namespace NSTQ::Tool
