// The sources by what an input is.
#pragma once

#include "CInputFile.h"
#include "ISource.h"
#include "SOptions.h"

#include <memory>

namespace NSTQ::Tool {

class SCSources {
public:
    /// Whether the input is a workbook or database.
    static bool HasTables(const CInputFile& input);
    /// Sets the code page until the source is gone. The options and the input must outlive it. Throws CFailure.
    static std::unique_ptr<ISource> Open(const SOptions& options, const CInputFile& input);
};

} // namespace NSTQ::Tool
