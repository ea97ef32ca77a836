#include "SCConvert.h"

#include "CFolderConversion.h"
#include "COneOutput.h"
#include "COutputTarget.h"
#include "CProgressBar.h"
#include "CRejectFile.h"
#include "SCTableSelection.h"
#include "SCTargets.h"
#include "SCTerminal.h"

#include <memory>
#include <optional>

namespace NSTQ::Tool {
namespace {

/// Rows that a terminal shows would be mixed with it, and so would be what another program shows that reads them.
bool IsProgressWanted(const SOptions& options) {
    Port::SStatus status;
    const bool isShown = options.outputFolder.empty() && COutputTarget::IsStandardOutputName(options.output) &&
                         Port::GetStatus(Port::GetStandardStream(Port::EStream::Output), status) == 0 &&
                         status.kind != Port::EKind::Regular;
    return SCTerminal::IsLively(Port::EStream::Error) && !options.quiet && !isShown;
}

EExitStatus IntoOne(const SOptions& options, const SShared& shared) {
    if (options.files.size() > 1)
        SCTargets::CheckInputs(options);
    COneOutput output(options, options.output, shared);
    for (const std::string& file : options.files)
        if (!output.Append(file))
            break;
    output.Finish();
    return output.HasLostRows() ? EExitStatus::RowsLost : EExitStatus::Ok;
}

} // namespace

EExitStatus SCConvert::Run(const SOptions& options) {
    std::optional<CFolderConversion> folder;
    if (options.outputFolder.empty())
        CTakenTargets(options).Take(options.output, options.files[0]);
    else
        folder.emplace(options);
    std::unique_ptr<CRejectFile> rejects;
    if (!options.rejects.empty())
        rejects = std::make_unique<CRejectFile>(options.rejects, options.formulaGuard,
                                                SCTableSelection::MaySelectSeveral(options));
    CProgressBar bar(IsProgressWanted(options), options.files);
    const SShared shared{rejects.get(), bar};
    return folder ? folder->Run(shared) : IntoOne(options, shared);
}

} // namespace NSTQ::Tool
