// The names of the outputs, checked before anything is written: no two are the same, and none is an input.
#pragma once

#include "SOptions.h"

#include <string>
#include <vector>

namespace NSTQ::Tool {

class SCTargets {
public:
    /// The output of each input in the folder that the options name: the input's name with the extension "csv".
    static std::vector<std::string> InFolder(const SOptions& options);

    /// Throws CFailure when two of the targets are one file, when one of them is an input, or is the file for
    /// rejected rows, or when that is an input.
    static void Check(const SOptions& options, const std::vector<std::string>& targets);

    /// Throws CFailure if an input does not exist or access is denied.
    static void CheckInputs(const SOptions& options);
};

} // namespace NSTQ::Tool
