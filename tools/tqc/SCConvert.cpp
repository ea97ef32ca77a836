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

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <optional>

namespace NSTQ::Tool {
namespace {

/// Rows that a terminal shows would be mixed with it, and so would be what another program shows that reads them.
bool IsProgressWanted(const SOptions& options) {
    struct stat status {};
    const bool isShown = options.strOutputFolder.empty() && COutputTarget::IsStandardOutputName(options.strOutput) &&
                         ::fstat(STDOUT_FILENO, &status) == 0 && !S_ISREG(status.st_mode);
    return SCTerminal::IsLively(STDERR_FILENO) && !options.bQuiet && !isShown;
}

/// What the outputs share.
struct SShared {
    CRejectFile* pRejects; ///< may be null
    CProgressBar& bar;
};

/// One output and the inputs that go into it.
class COneOutput {
public:
    COneOutput(const SOptions& options, std::string name, const SShared& shared)
        : m_options(options), m_strName(std::move(name)), m_pRejects(shared.pRejects), m_bar(shared.bar) {}

    /// False when nobody reads the output any more.
    bool Append(const std::string& file) {
        m_bar.Begin(file);
        const CInputFile input(m_options, file);
        try {
            return AppendInput(input);
        } catch (const Platform::_com_error& error) {
            throw input.Explain(error);
        }
    }

    /// The rejected rows go into their place first: an output without them would hide what it lacks.
    void Finish() {
        if (!m_output)
            return;
        m_output->Close();
        if (m_pRejects != nullptr)
            m_pRejects->Place();
        m_output->Replace();
    }

    bool HasLostRows() const { return m_bLostRows; }

private:
    bool AppendInput(const CInputFile& input) {
        const auto source = SCSources::Open(m_options, input);
        const auto reader = source->OpenReader();
        // Only now, so that a file that cannot be read leaves a device or pipe alone.
        if (!m_output)
            m_output.emplace(m_options, m_strName);
        if (m_output->IsStandardOutput() && input.Head().IsFileOf(STDOUT_FILENO))
            throw CFailure(ES_USAGE, input.Name(), "standard output is this very file; use -o");
        if (m_pRejects != nullptr)
            m_pRejects->SetSource(input.Name(), source->Text());
        CReporter reporter(input.Name(), m_options.bQuiet, m_bar);
        if (source->Text() != nullptr)
            reporter.Note(source->Text()->DescribeInvalidText());
        CRowPump pump(m_options, *reader, {*m_output, m_pRejects, m_columns}, reporter);
        const bool goOn = WriteNames(*source, pump) && pump.Run();
        reporter.Finish();
        m_bLostRows = m_bLostRows || reporter.HasLostRows();
        return goOn;
    }

    /// False when nobody reads the output any more.
    bool WriteNames(const ISource& source, CRowPump& pump) const {
        if (!m_options.bHeader)
            return true;
        const auto* const names = source.ColumnNames();
        return names != nullptr ? pump.WriteNames(*names) : pump.WriteFirstRowAsNames();
    }

    const SOptions& m_options;
    std::string m_strName;
    CRejectFile* m_pRejects;
    CProgressBar& m_bar;
    CColumns m_columns;
    std::optional<COutputFile> m_output;
    bool m_bLostRows = false;
};

EExitStatus IntoOne(const SOptions& options, const SShared& shared) {
    if (options.files.size() > 1)
        SCTargets::CheckInputs(options);
    COneOutput output(options, options.strOutput, shared);
    for (const std::string& file : options.files)
        if (!output.Append(file))
            break;
    output.Finish();
    return output.HasLostRows() ? ES_ROWS_LOST : ES_OK;
}

EExitStatus IntoFolder(const SOptions& options, const std::vector<std::string>& targets, const SShared& shared) {
    EExitStatus status = ES_OK;
    const auto note = [&status](EExitStatus other) {
        status = status == ES_OK || status == ES_ROWS_LOST ? std::max(status, other) : status;
    };
    for (std::size_t i = 0; i < targets.size(); ++i) {
        try {
            COneOutput output(options, targets[i], shared);
            output.Append(options.files[i]);
            output.Finish();
            note(output.HasLostRows() ? ES_ROWS_LOST : ES_OK);
        } catch (const CFailure& failure) {
            if (failure.Status() == ES_OUTPUT_FAILED)
                throw;
            shared.bar.Clear();
            CReporter::Print(failure.what());
            note(failure.Status());
        }
    }
    return status;
}

void MakeFolder(const std::string& path) {
    std::error_code error;
    std::filesystem::create_directories(path, error);
    if (error)
        throw CFailure(ES_OUTPUT_FAILED, path, error.message());
}

} // namespace

EExitStatus SCConvert::Run(const SOptions& options) {
    const bool isFolder = !options.strOutputFolder.empty();
    const auto targets = isFolder ? SCTargets::InFolder(options) : std::vector<std::string>{options.strOutput};
    SCTargets::Check(options, targets);
    if (isFolder)
        MakeFolder(options.strOutputFolder);
    std::unique_ptr<CRejectFile> rejects;
    if (!options.strRejects.empty())
        rejects = std::make_unique<CRejectFile>(options.strRejects, options.bFormulaGuard);
    CProgressBar bar(IsProgressWanted(options), options.files);
    const SShared shared{rejects.get(), bar};
    return isFolder ? IntoFolder(options, targets, shared) : IntoOne(options, shared);
}

} // namespace NSTQ::Tool
