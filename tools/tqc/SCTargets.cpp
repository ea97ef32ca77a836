#include "SCTargets.h"

#include "CFailure.h"
#include "CInputFile.h"
#include "COutputTarget.h"
#include "SCErrorText.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <map>
#include <tuple>

namespace NSTQ::Tool {
namespace {

/// Identifies a file: device and inode of an existing one, else those of its folder, with its name.
using CIdentity = std::tuple<dev_t, ino_t, std::string>;

/// False for pipes and devices, which are not replaced.
bool IsReplaced(const std::string& name) {
    struct stat status {};
    return !COutputTarget::IsStandardOutputName(name) &&
           (::stat(name.c_str(), &status) != 0 || S_ISREG(status.st_mode));
}

CIdentity Identify(const std::string& name) {
    struct stat status {};
    if (::stat(name.c_str(), &status) == 0)
        return {status.st_dev, status.st_ino, ""};
    const std::filesystem::path path = COutputTarget::FollowLinks(name);
    const std::string folder = path.has_parent_path() ? path.parent_path().string() : ".";
    if (::stat(folder.c_str(), &status) != 0)
        return {0, 0, path.string()};
    return {status.st_dev, status.st_ino, path.filename().string()};
}

} // namespace

std::vector<std::string> SCTargets::InFolder(const SOptions& options) {
    std::vector<std::string> targets;
    for (const std::string& file : options.files) {
        std::filesystem::path name =
            CInputFile::IsStandardInput(file) ? "stdin" : std::filesystem::path(file).filename();
        targets.push_back(std::filesystem::path(options.outputFolder) / name.replace_extension("csv"));
    }
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
        if (!CInputFile::IsStandardInput(file) && ::access(file.c_str(), R_OK) != 0)
            throw CFailure(EExitStatus::NotFound, file, SCErrorText::OfSystem(errno));
}

} // namespace NSTQ::Tool
