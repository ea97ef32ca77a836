#include "SCOutputs.h"

#include "CJsonLinesOutput.h"
#include "COutputFile.h"

namespace NSTQ::Tool {

SOutput SCOutputs::Open(const SOptions& options, const std::string& name) {
    if (options.format == SOptions::EFormat::Csv)
        return {std::make_unique<COutputFile>(options, name)};
    auto output = std::make_unique<CJsonLinesOutput>(options, name);
    ITypedOutput* const typed = output.get();
    return {std::move(output), typed};
}

} // namespace NSTQ::Tool
