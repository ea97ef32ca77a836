#include "SCConvert.h"

#include "CFolderConversion.h"
#include "CInputReports.h"
#include "COneOutput.h"
#include "COutputTarget.h"
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

EExitStatus IntoOne(const SOptions& options, CRejectFile* rejects, CInputReports& reports) {
    if (options.files.size() > 1)
        SCTargets::CheckInputs(options);
    COneOutput output(options, options.output, rejects);
    bool goesOn = true;
    for (std::size_t i = 0; i < options.files.size() && goesOn; ++i) {
        CInputReport report(reports, i);
        goesOn = output.Append(options.files[i], report);
    }
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
    CInputReports reports(IsProgressWanted(options), options.files);
    return folder ? folder->Run(rejects.get(), reports) : IntoOne(options, rejects.get(), reports);
}

} // namespace NSTQ::Tool
