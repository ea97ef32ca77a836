#include "SCOutputs.h"

#include "CJsonLinesOutput.h"
#include "COutputFile.h"

#ifdef TQC_WITH_SQLITE
#include "CSqliteOutput.h"
#else
#include "CFailure.h"
#endif

namespace NSTQ::Tool {
namespace {

#ifdef TQC_WITH_SQLITE
SOutput OpenDatabase(const SOptions& options, const std::string& name) {
    auto output = std::make_unique<CSqliteOutput>(options, name);
    ITypedOutput* const typed = output.get();
    return {std::move(output), typed};
}
#else
SOutput OpenDatabase(const SOptions& /*options*/, const std::string& name) {
    throw CFailure(EExitStatus::Unsupported, name,
                   "this tqc was built without SQLite; write JSON Lines with --to jsonl, or CSV with --to csv");
}
#endif

} // namespace

SOutput SCOutputs::Open(const SOptions& options, const std::string& name) {
    if (options.format == SOptions::EFormat::Csv)
        return {std::make_unique<COutputFile>(options, name)};
    if (options.format == SOptions::EFormat::Sqlite)
        return OpenDatabase(options, name);
    auto output = std::make_unique<CJsonLinesOutput>(options, name);
    ITypedOutput* const typed = output.get();
    return {std::move(output), typed};
}

} // namespace NSTQ::Tool
