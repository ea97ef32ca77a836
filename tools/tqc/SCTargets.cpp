#include "SCTargets.h"

#include "CFailure.h"
#include "CInputFile.h"
#include "COutputTarget.h"
#include "tqcAccess/ErrorText.h"

#include <map>
#include <tuple>

namespace NSTQ::Tool {
namespace {

/// Identifies a file: device and number of an existing one, else those of its folder, with its name.
using CIdentity = std::tuple<std::uint64_t, std::uint64_t, std::string>;

/// False for pipes and devices, which are not replaced.
bool IsReplaced(const std::string& name) {
    Port::SStatus status;
    return !COutputTarget::IsStandardOutputName(name) &&
           (Port::GetStatus(name, status) != 0 || status.kind == Port::EKind::Regular);
}

CIdentity Identify(const std::string& name) {
    Port::SStatus status;
    if (Port::GetStatus(name, status) == 0)
        return {status.device, status.number, ""};
    const std::string path = COutputTarget::FollowLinks(name);
    const std::size_t nameAt = path.find_last_of('/') + 1;
    if (Port::GetStatus(nameAt == 0 ? "." : path.substr(0, nameAt), status) != 0)
        return {0, 0, path};
    return {status.device, status.number, Port::ToComparableName(path.substr(nameAt))};
}

/// The last name of a path, with the extension "csv" instead of its own.
std::string NameOfOutput(const std::string& path) {
    const std::string name = path.substr(path.find_last_of('/') + 1);
    const std::size_t dot = name.find_last_of('.');
    return (dot == std::string::npos || dot == 0 ? name : name.substr(0, dot)) + ".csv";
}

} // namespace

std::vector<std::string> SCTargets::InFolder(const SOptions& options) {
    std::vector<std::string> targets;
    const std::string folder = options.outputFolder + (options.outputFolder.ends_with('/') ? "" : "/");
    for (const std::string& file : options.files)
        targets.push_back(folder + NameOfOutput(CInputFile::IsStandardInput(file) ? "stdin" : file));
    return targets;
}

void SCTargets::Check(const SOptions& options, const std::vector<std::string>& targets) {
    std::map<CIdentity, std::string> inputs;
    for (const std::string& file : options.files)
        if (!CInputFile::IsStandardInput(file))
            inputs.emplace(Identify(file), file);
    // A single file may replace itself.
    const bool isInPlace = options.files.size() == 1 && options.outputFolder.empty();
    std::map<CIdentity, std::string> taken;
    for (std::size_t i = 0; i < targets.size(); ++i) {
        if (!IsReplaced(targets[i]))
            continue;
        const CIdentity identity = Identify(targets[i]);
        if (const auto input = inputs.find(identity); input != inputs.end() && !isInPlace)
            throw CFailure(EExitStatus::Usage, targets[i],
                           "the output would replace the input " + input->second +
                               "; nothing was written; try another output");
        const auto [other, isNew] = taken.emplace(identity, options.files[i]);
        if (!isNew)
            throw CFailure(EExitStatus::Usage, targets[i],
                           "would be the output of both " + other->second + " and " + options.files[i] +
                               "; nothing was written; convert them separately");
    }
    if (options.rejects.empty() || !IsReplaced(options.rejects))
        return;
    const CIdentity rejects = Identify(options.rejects);
    if (inputs.contains(rejects) || taken.contains(rejects))
        throw CFailure(EExitStatus::Usage, options.rejects,
                       "the file for rejected rows is also an input or the output");
}

void SCTargets::CheckInputs(const SOptions& options) {
    for (const std::string& file : options.files)
        if (!CInputFile::IsStandardInput(file))
            if (const DWORD code = Port::CheckAccess(file, Port::EAccess::Read); code != 0)
                throw CFailure(EExitStatus::NotFound, file, Platform::GetErrorText(code));
}

} // namespace NSTQ::Tool
