// The first rows of a source on standard output, to see what is in it.
#pragma once

#include "CInputFile.h"
#include "SOptions.h"

namespace NSTQ::Tool {

class SCPreview {
public:
    /// Fixed-length text as it stands, under a ruler of its bytes; other sources as their fields. Throws CFailure.
    static void Show(const SOptions& options, const CInputFile& input);
};

} // namespace NSTQ::Tool
