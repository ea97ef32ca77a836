#include "SCConvert.h"

#include "COneOutput.h"
#include "COutputTarget.h"
#include "CProgressBar.h"
#include "CRejectFile.h"
#include "CReporter.h"
#include "SCTargets.h"
#include "SCTerminal.h"
#include "tqcAccess/ErrorText.h"

#include <algorithm>
#include <memory>

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

EExitStatus IntoFolder(const SOptions& options, const std::vector<std::string>& targets, const SShared& shared) {
    EExitStatus status = EExitStatus::Ok;
    const auto note = [&status](EExitStatus other) {
        status = status == EExitStatus::Ok || status == EExitStatus::RowsLost ? std::max(status, other) : status;
    };
    for (std::size_t i = 0; i < targets.size(); ++i) {
        try {
            COneOutput output(options, targets[i], shared);
            output.Append(options.files[i]);
            output.Finish();
            note(output.HasLostRows() ? EExitStatus::RowsLost : EExitStatus::Ok);
        } catch (const CFailure& failure) {
            if (failure.Status() == EExitStatus::OutputFailed)
                throw;
            shared.bar.Clear();
            CReporter::Print(failure.what());
            note(failure.Status());
        }
    }
    return status;
}

bool IsFolder(const std::string& path) {
    Port::SStatus status;
    return Port::GetStatus(path, status) == 0 && status.kind == Port::EKind::Folder;
}

/// With the folders above it.
void MakeFolder(const std::string& path) {
    for (std::size_t end = 0; end < path.size();) {
        end = std::min(path.find('/', end + 1), path.size());
        const std::string level = path.substr(0, end);
        if (IsFolder(level))
            continue;
        const DWORD code = Port::MakeFolder(level);
        if (code != 0 && !IsFolder(level))
            throw CFailure(EExitStatus::OutputFailed, path, Platform::GetErrorText(code));
    }
}

} // namespace

EExitStatus SCConvert::Run(const SOptions& options) {
    const bool isFolder = !options.outputFolder.empty();
    const auto targets = isFolder ? SCTargets::InFolder(options) : std::vector<std::string>{options.output};
    SCTargets::Check(options, targets);
    if (isFolder)
        MakeFolder(options.outputFolder);
    std::unique_ptr<CRejectFile> rejects;
    if (!options.rejects.empty())
        rejects = std::make_unique<CRejectFile>(options.rejects, options.formulaGuard);
    CProgressBar bar(IsProgressWanted(options), options.files);
    const SShared shared{rejects.get(), bar};
    return isFolder ? IntoFolder(options, targets, shared) : IntoOne(options, shared);
}

} // namespace NSTQ::Tool
