#include "CFolderConversion.h"

#include "CReporter.h"
#include "CTypedPump.h"
#include "SCFileNames.h"
#include "SCJobs.h"
#include "SCSources.h"
#include "SCTableSelection.h"
#include "tqcAccess/ErrorText.h"

#include <algorithm>
#include <numeric>

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
    : m_options(options),
      m_isMany(SCTableSelection::MaySelectSeveral(options) && options.format != SOptions::EFormat::Sqlite),
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

EExitStatus CFolderConversion::Run(CRejectFile* rejects, CInputReports& reports) {
    std::vector<EExitStatus> statuses(m_options.files.size(), EExitStatus::Ok);
    SCJobs::Run(statuses.size(), m_options.jobs, [&](std::size_t at) {
        CInputReport report(reports, at);
        try {
            statuses[at] = Convert(at, {rejects, report});
        } catch (const CStopped&) {
            // The one that stopped it has the message.
            return;
        } catch (...) {
            reports.Stop();
            throw;
        }
    });
    return std::accumulate(statuses.begin(), statuses.end(), EExitStatus::Ok, Join);
}

/// Reports the failure, unless it ends everything.
EExitStatus CFolderConversion::Fail(const CFailure& failure, const SShared& shared) {
    if (failure.Status() == EExitStatus::OutputFailed)
        throw failure;
    shared.report.Print(failure.what());
    return failure.Status();
}

EExitStatus CFolderConversion::Convert(std::size_t at, const SShared& shared) {
    try {
        return ConvertInput(at, shared);
    } catch (const CFailure& failure) {
        return Fail(failure, shared);
    }
}

EExitStatus CFolderConversion::ConvertInput(std::size_t at, const SShared& shared) {
    const std::string& file = m_options.files[at];
    const CInputFile input(m_options, file);
    try {
        if (m_options.format != SOptions::EFormat::Csv && SCSources::HasTables(input))
            return ConvertTyped(at, input, shared);
        const auto source = SCSources::Open(m_options, input);
        if (CTableSource* const tables = m_isMany ? source->Tables() : nullptr; tables != nullptr) {
            std::vector<std::size_t> selected;
            const std::vector<std::string>& names = tables->SelectTables(selected);
            const auto append = [&](COneOutput& output, std::size_t table, const std::string& subject) {
                output.AppendRows(input, {*source, tables->OpenTable(table), subject, names[table]}, shared.report);
            };
            return ConvertTables(at, input, {tables->TableKind(), names, selected, append}, shared);
        }
        const auto reader = source->OpenReader();
        COneOutput output(m_options, TakeFile(at, shared), shared.rejects);
        output.AppendRows(input, {*source, *reader, file, ""}, shared.report);
        return Finish(output);
    } catch (const Platform::_com_error& error) {
        throw input.Explain(error);
    }
}

/// A workbook or database into a format with types.
EExitStatus CFolderConversion::ConvertTyped(std::size_t at, const CInputFile& input, const SShared& shared) {
    if (!m_isMany) {
        COneOutput output(m_options, TakeFile(at, shared), shared.rejects);
        output.AppendTables(input, shared.report);
        return Finish(output);
    }
    const CLibrarySource source(m_options, input, CTypedPump::HasHeaderRow(m_options));
    const auto& names = source.TableNames();
    const auto append = [&](COneOutput& output, std::size_t table, const std::string& subject) {
        output.AppendTable(input, source, {table, subject}, shared.report);
    };
    const auto selected = SCTableSelection::Find(m_options, names, {input.Name(), source.TableKind()});
    return ConvertTables(at, input, {source.TableKind(), names, selected, append}, shared);
}

/// The file for an input that has one.
const std::string& CFolderConversion::TakeFile(std::size_t at, const SShared& shared) {
    const STarget& target = m_targets[at];
    if (m_isMany)
        m_taken->Take(target.path, m_options.files[at]);
    NoteName(m_options.files[at], target, shared);
    return target.path;
}

/// The source is opened once for all of them.
EExitStatus CFolderConversion::ConvertTables(std::size_t at, const CInputFile& input, const STables& tables,
                                             const SShared& shared) {
    const STarget& folder = m_targets[m_options.files.size() + at];
    const std::vector<STarget> targets = NameTables(folder.path, tables.names);
    // A link that another user has planted would lead out of the folder.
    COutputTarget::FollowLinks(folder.path.substr(0, folder.path.size() - 1));
    MakeFolder(folder.path);
    NoteName(input.Name(), folder, shared);
    EExitStatus status = EExitStatus::Ok;
    for (std::size_t i = 0; i < tables.selected.size(); ++i) {
        const std::size_t table = tables.selected[i];
        shared.report.BeginPart(i, tables.selected.size());
        const std::string subject = input.Name() + ": " + tables.kind + " \"" + tables.names[table] + '"';
        try {
            m_taken->Take(targets[table].path, subject);
            COneOutput output(m_options, targets[table].path, shared.rejects);
            tables.append(output, table, subject);
            NoteName(subject, targets[table], shared);
            status = Join(status, Finish(output));
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
    wanted.reserve(names.size());
    for (const std::string& name : names)
        wanted.push_back({name, SCTargets::Extension(m_options)});
    const std::vector<std::string> made = SCFileNames::Make(wanted);
    std::vector<STarget> targets;
    for (std::size_t i = 0; i < made.size(); ++i)
        targets.push_back({folder + made[i], made[i] != wanted[i].name + wanted[i].extension});
    return targets;
}

EExitStatus CFolderConversion::Finish(COneOutput& output) {
    output.Finish();
    return output.HasLostRows() ? EExitStatus::RowsLost : EExitStatus::Ok;
}

/// Tells a name that differs from that of the input or table.
void CFolderConversion::NoteName(const std::string& subject, const STarget& target, const SShared& shared) const {
    if (target.isRenamed)
        CReporter(subject, m_options.quiet, shared.report)
            .Note("written to " + target.path + ": its own name is invalid or taken there");
}

} // namespace NSTQ::Tool
