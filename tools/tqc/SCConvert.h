// The conversion: all inputs into one output, or each into one of its own in a folder.
//
// A single output is replaced after all inputs have been read; any failure leaves it unchanged. In a folder each
// output is independent: if an input fails, its output is unchanged, the others are converted, and the exit status is
// that of the first failure. Only an output that cannot be written ends everything.
#pragma once

#include "CFailure.h"
#include "SOptions.h"

namespace NSTQ::Tool {

class SCConvert {
public:
    /// Throws CFailure.
    static EExitStatus Run(const SOptions& options);
};

} // namespace NSTQ::Tool
