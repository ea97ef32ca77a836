// The conversion: all inputs into one output, or each into one of its own in a folder.
//
// One output is put into its place when all inputs have been read; any failure leaves it as it was. In a folder each
// output stands for itself: a failing input leaves its own as it was, the others are converted, and the status is
// that of the first failure. Only when an output cannot be written does nothing more follow.
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
