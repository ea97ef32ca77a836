#include "SCConvert.h"

#include "CColumns.h"
#include "CInputFile.h"
#include "COutputFile.h"
#include "CProgressBar.h"
#include "CRejectFile.h"
#include "CReporter.h"
#include "CRowPump.h"
#include "CTextFile.h"
#include "SCSources.h"
#include "SCTargets.h"
#include "SCTerminal.h"
#include "tqcAccess/ComError.h"
#include "tqcAccess/ErrorText.h"

#include <algorithm>
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

/// The objects that the outputs share.
struct SShared {
    CRejectFile* rejects; ///< may be null
    CProgressBar& bar;
};

/// One output and the inputs that go into it.
class COneOutput {
public:
    COneOutput(const SOptions& options, std::string name, const SShared& shared)
        : m_options(options), m_name(std::move(name)), m_rejects(shared.rejects), m_bar(shared.bar) {}

    /// False when the reader has closed the output pipe.
    bool Append(const std::string& file) {
        m_bar.Begin(file);
        const CInputFile input(m_options, file);
        try {
            return AppendInput(input);
        } catch (const Platform::_com_error& error) {
            throw input.Explain(error);
        }
    }

    /// Replaces the file of rejected rows first: an output without it would look complete.
    void Finish() {
        if (!m_output)
            return;
        m_output->Close();
        if (m_rejects != nullptr)
            m_rejects->Place();
        m_output->Replace();
    }

    bool HasLostRows() const { return m_hasLostRows; }

private:
    bool AppendInput(const CInputFile& input) {
        const auto source = SCSources::Open(m_options, input);
        const auto reader = source->OpenReader();
        // Only now, so that nothing is written to a device or pipe if the file cannot be read.
        if (!m_output)
            m_output.emplace(m_options, m_name);
        if (m_output->IsStandardOutput() && input.Head().IsFileOf(Port::GetStandardStream(Port::EStream::Output)))
            throw CFailure(EExitStatus::Usage, input.Name(), "standard output is the input file; use -o");
        if (m_rejects != nullptr)
            m_rejects->SetSource(input.Name(), source->Text());
        CReporter reporter(input.Name(), m_options.quiet, m_bar);
        if (source->Text() != nullptr)
            reporter.Note(source->Text()->DescribeInvalidText());
        CRowPump pump(m_options, *reader, {*m_output, m_rejects, m_columns}, reporter);
        const bool goOn = WriteNames(*source, pump) && pump.Run();
        reporter.Finish();
        m_hasLostRows = m_hasLostRows || reporter.HasLostRows();
        return goOn;
    }

    /// False when the reader has closed the output pipe.
    bool WriteNames(const ISource& source, CRowPump& pump) const {
        if (!m_options.header)
            return true;
        const auto* const names = source.ColumnNames();
        return names != nullptr ? pump.WriteNames(*names) : pump.WriteFirstRowAsNames();
    }

    const SOptions& m_options;
    std::string m_name;
    CRejectFile* m_rejects;
    CProgressBar& m_bar;
    CColumns m_columns;
    std::optional<COutputFile> m_output;
    bool m_hasLostRows = false;
};

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
