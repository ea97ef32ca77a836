// Texts of the error codes of the library and of the port.
#pragma once

#include "tqcAccess/Types.h"

#include <string>

namespace NSTQ::Tool {

class SCErrorText {
public:
    static constexpr DWORD fileExists = 80;
    static constexpr DWORD brokenPipe = 109;

    static std::string Of(DWORD code);
};

} // namespace NSTQ::Tool
