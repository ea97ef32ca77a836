// The outputs by their format.
#pragma once

#include "IRowOutput.h"
#include "ITypedOutput.h"
#include "SOptions.h"

#include <memory>
#include <string>

namespace NSTQ::Tool {

/// An output, and the same with the types of its format if that has any.
struct SOutput {
    std::unique_ptr<IRowOutput> rows;
    ITypedOutput* typed = nullptr;
};

class SCOutputs {
public:
    /// Opens the target `name` for rows in the format that the options give. Throws CFailure.
    static SOutput Open(const SOptions& options, const std::string& name);
};

} // namespace NSTQ::Tool
