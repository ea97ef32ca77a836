#include "CFolderConversion.h"

#include "CReporter.h"
#include "SCFileNames.h"
#include "SCSources.h"
#include "SCTableSelection.h"
#include "tqcAccess/ErrorText.h"

#include <algorithm>

namespace NSTQ::Tool {
namespace {

/// The first failure counts, and lost rows only without one.
EExitStatus Join(EExitStatus first, EExitStatus second) {
    return first == EExitStatus::Ok || first == EExitStatus::RowsLost ? std::max(first, second) : first;
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

CFolderConversion::CFolderConversion(const SOptions& options)
    : m_options(options), m_isMany(SCTableSelection::MaySelectSeveral(options)),
      m_targets(m_isMany ? SCTargets::FilesAndFolders(options) : SCTargets::FilesInFolder(options)) {
    if (m_isMany) {
        // Which files the tables give is known only when their input is open.
        MakeFolder(options.outputFolder);
        m_taken.emplace(options);
        return;
    }
    m_taken.emplace(options);
    for (std::size_t i = 0; i < m_targets.size(); ++i)
        m_taken->Take(m_targets[i].path, options.files[i]);
    MakeFolder(options.outputFolder);
}

EExitStatus CFolderConversion::Run(const SShared& shared) {
    EExitStatus status = EExitStatus::Ok;
    for (std::size_t i = 0; i < m_options.files.size(); ++i) {
        try {
            status = Join(status, Convert(i, shared));
        } catch (const CFailure& failure) {
            status = Join(status, Fail(failure, shared));
        }
    }
    return status;
}

/// Reports the failure, unless it ends everything.
EExitStatus CFolderConversion::Fail(const CFailure& failure, const SShared& shared) {
    if (failure.Status() == EExitStatus::OutputFailed)
        throw failure;
    shared.bar.Clear();
    CReporter::Print(failure.what());
    return failure.Status();
}

EExitStatus CFolderConversion::Convert(std::size_t at, const SShared& shared) {
    const std::string& file = m_options.files[at];
    shared.bar.Begin(file);
    const CInputFile input(m_options, file);
    try {
        const auto source = SCSources::Open(m_options, input);
        CTableSource* const tables = m_isMany ? source->Tables() : nullptr;
        if (tables != nullptr)
            return ConvertTables(m_targets[m_options.files.size() + at], input, *tables, shared);
        const STarget& target = m_targets[at];
        const auto reader = source->OpenReader();
        if (m_isMany)
            m_taken->Take(target.path, file);
        NoteName(file, target, shared);
        return WriteRows(target.path, input, {*source, *reader, file, ""}, shared);
    } catch (const Platform::_com_error& error) {
        throw input.Explain(error);
    }
}

/// The source is opened once for all of them.
EExitStatus CFolderConversion::ConvertTables(const STarget& folder, const CInputFile& input, CTableSource& source,
                                             const SShared& shared) {
    std::vector<std::size_t> selected;
    const std::vector<std::string>& names = source.SelectTables(selected);
    const std::vector<STarget> targets = NameTables(folder.path, names);
    // A link that another user has planted would lead out of the folder.
    COutputTarget::FollowLinks(folder.path.substr(0, folder.path.size() - 1));
    MakeFolder(folder.path);
    NoteName(input.Name(), folder, shared);
    EExitStatus status = EExitStatus::Ok;
    for (const std::size_t table : selected) {
        const std::string subject = source.DescribeTable(names[table]);
        try {
            m_taken->Take(targets[table].path, subject);
            ISourceReader& reader = source.OpenTable(table);
            NoteName(subject, targets[table], shared);
            status =
                Join(status, WriteRows(targets[table].path, input, {source, reader, subject, names[table]}, shared));
        } catch (const CFailure& failure) {
            status = Join(status, Fail(failure, shared));
        } catch (const Platform::_com_error& error) {
            status = Join(status, Fail(input.Explain(error, subject), shared));
        }
    }
    return status;
}

/// Of all tables, so that the file of one has the same name whichever are selected.
std::vector<STarget> CFolderConversion::NameTables(const std::string& folder,
                                                   const std::vector<std::string>& names) const {
    std::vector<SCFileNames::SWanted> wanted;
    for (const std::string& name : names)
        wanted.push_back({name, SCTargets::Extension(m_options)});
    const std::vector<std::string> made = SCFileNames::Make(wanted);
    std::vector<STarget> targets;
    for (std::size_t i = 0; i < made.size(); ++i)
        targets.push_back({folder + made[i], made[i] != wanted[i].name + wanted[i].extension});
    return targets;
}

EExitStatus CFolderConversion::WriteRows(const std::string& target, const CInputFile& input, const SRows& rows,
                                         const SShared& shared) const {
    COneOutput output(m_options, target, shared);
    output.AppendRows(input, rows);
    output.Finish();
    return output.HasLostRows() ? EExitStatus::RowsLost : EExitStatus::Ok;
}

/// Tells a name that differs from that of the input or table.
void CFolderConversion::NoteName(const std::string& subject, const STarget& target, const SShared& shared) const {
    if (target.isRenamed)
        CReporter(subject, m_options.quiet, shared.bar)
            .Note("written to " + target.path + ": its own name is invalid or taken there");
}

} // namespace NSTQ::Tool
