#include "SCTargets.h"

#include "CFailure.h"
#include "CInputFile.h"
#include "COutputTarget.h"
#include "SCFileNames.h"
#include "SCFormOptions.h"
#include "SCTypeNames.h"
#include "tqcAccess/ErrorText.h"

namespace NSTQ::Tool {
namespace {

/// False for pipes and devices, which are not replaced.
bool IsReplaced(const std::string& name) {
    Port::SStatus status;
    return !COutputTarget::IsStandardOutputName(name) &&
           (Port::GetStatus(name, status) != 0 || status.kind == Port::EKind::Regular);
}

std::string FolderOf(const SOptions& options) {
    return options.outputFolder + (options.outputFolder.ends_with('/') ? "" : "/");
}

} // namespace

std::string SCTargets::Extension(const SOptions& options) {
    return SCFormOptions::ExtensionOf(options.format);
}

std::vector<STarget> SCTargets::FilesInFolder(const SOptions& options) {
    std::vector<STarget> targets;
    for (const std::string& file : options.files)
        targets.push_back({FolderOf(options) + CInputFile::StemOf(file) + Extension(options), false});
    return targets;
}

/// What an input probably has by its extension, a file or a folder, takes its name first.
std::vector<STarget> SCTargets::FilesAndFolders(const SOptions& options) {
    const std::size_t count = options.files.size();
    std::vector<STarget> targets(count * 2);
    std::vector<SCFileNames::SWanted> wanted;
    std::vector<std::size_t> places;
    for (const bool isLikely : {true, false})
        for (std::size_t i = 0; i < count * 2; ++i) {
            const std::string& file = options.files[i % count];
            const bool isFolder = i >= count;
            if ((SCTypeNames::HasTables(options.type.value_or(SCTypeNames::OfFile(file))) == isFolder) != isLikely)
                continue;
            wanted.push_back({CInputFile::StemOf(file), isFolder ? "" : Extension(options)});
            places.push_back(i);
        }
    const std::vector<std::string> names = SCFileNames::Make(wanted);
    for (std::size_t i = 0; i < names.size(); ++i) {
        const bool isFolder = places[i] >= count;
        const bool isRenamed = names[i] != wanted[i].name + wanted[i].extension;
        targets[places[i]] = isFolder && count == 1
                                 ? STarget{FolderOf(options), false}
                                 : STarget{FolderOf(options) + names[i] + (isFolder ? "/" : ""), isRenamed};
    }
    return targets;
}

void SCTargets::CheckInputs(const SOptions& options) {
    for (const std::string& file : options.files)
        if (!CInputFile::IsStandardInput(file))
            if (const DWORD code = Port::CheckAccess(file, Port::EAccess::Read); code != 0)
                throw CFailure(EExitStatus::NotFound, file, Platform::GetErrorText(code));
}

CTakenTargets::CTakenTargets(const SOptions& options)
    : m_isInPlace(options.files.size() == 1 && options.outputFolder.empty()) {
    for (const std::string& file : options.files)
        if (!CInputFile::IsStandardInput(file))
            for (const CIdentity& identity : Identify(file))
                m_inputs.emplace(identity, file);
    if (options.rejects.empty() || !IsReplaced(options.rejects))
        return;
    m_rejects = options.rejects;
    for (const CIdentity& identity : Identify(m_rejects))
        if (m_inputs.contains(identity))
            throw CFailure(EExitStatus::Usage, m_rejects,
                           "the file for rejected rows is also an input; try another one");
        else
            m_outputs.emplace(identity, "");
}

void CTakenTargets::Take(const std::string& target, const std::string& subject) {
    if (!IsReplaced(target))
        return;
    const std::lock_guard lock(m_mutex);
    for (const CIdentity& identity : Identify(target)) {
        if (const auto input = m_inputs.find(identity); input != m_inputs.end() && !m_isInPlace)
            throw CFailure(EExitStatus::Usage, target,
                           "the output would replace the input " + input->second + "; try another output");
        const auto [other, isNew] = m_outputs.emplace(identity, subject);
        if (!isNew && other->second.empty())
            throw CFailure(EExitStatus::Usage, m_rejects,
                           "the file for rejected rows is also the output of " + subject + "; try another one");
        if (!isNew)
            throw CFailure(EExitStatus::Usage, target,
                           "would be the output of both " + other->second + " and " + subject +
                               "; convert them separately");
    }
}

/// By its place, and an existing one also by itself, which other places may share.
std::vector<CTakenTargets::CIdentity> CTakenTargets::Identify(const std::string& name) {
    const std::string path = COutputTarget::FollowLinks(name);
    const std::size_t nameAt = path.find_last_of('/') + 1;
    std::vector<CIdentity> identities;
    Port::SStatus status;
    if (Port::GetStatus(nameAt == 0 ? "." : path.substr(0, nameAt), status) == 0)
        identities.emplace_back(status.device, status.number, Port::ToComparableName(path.substr(nameAt)));
    else
        identities.emplace_back(0, 0, path);
    if (Port::GetStatus(name, status) == 0)
        identities.emplace_back(status.device, status.number, "");
    return identities;
}

} // namespace NSTQ::Tool
