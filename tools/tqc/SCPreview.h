// The first rows of a source on standard output, to see what is in it.
#pragma once

#include "CInputFile.h"
#include "SOptions.h"

namespace NSTQ::Tool {

class SCPreview {
public:
    /// Fixed-length text unchanged, under a ruler that counts bytes; other sources as their fields. Throws CFailure.
    static void Show(const SOptions& options, const CInputFile& input);
};

} // namespace NSTQ::Tool
