// Turns the command line and the locale's names into SOptions.
#pragma once

#include "SOptions.h"

#include <optional>

namespace NSTQ::Tool {

class SCCommandLine {
public:
    /// Empty when the help or the version was asked for and has been shown. Throws CFailure with EExitStatus::Usage.
    static std::optional<SOptions> Parse(int argc, const char* const* argv);
};

} // namespace NSTQ::Tool
