#include "COneOutput.h"

#include "CReporter.h"
#include "CTextFile.h"
#include "SCSources.h"

namespace NSTQ::Tool {

bool COneOutput::Append(const std::string& file) {
    m_bar.Begin(file);
    const CInputFile input(m_options, file);
    try {
        const auto source = SCSources::Open(m_options, input);
        const auto reader = source->OpenReader();
        return AppendRows(input, {*source, *reader, input.Name(), ""});
    } catch (const Platform::_com_error& error) {
        throw input.Explain(error);
    }
}

bool COneOutput::AppendRows(const CInputFile& input, const SRows& rows) {
    const ISource& source = rows.source;
    // Only now, so that nothing is written to a device or pipe if the file cannot be read.
    if (!m_output)
        m_output.emplace(m_options, m_name);
    if (m_output->IsStandardOutput() && input.Head().IsFileOf(Port::GetStandardStream(Port::EStream::Output)))
        throw CFailure(EExitStatus::Usage, input.Name(), "standard output is the input file; use -o");
    if (m_rejects != nullptr)
        m_rejects->SetSource(input.Name(), rows.table, source.Text());
    CReporter reporter(rows.subject, m_options.quiet, m_bar);
    if (source.Text() != nullptr)
        for (const std::string& doubt : source.Text()->DescribeDoubts())
            reporter.Note(doubt);
    CRowPump pump(m_options, rows.reader, {*m_output, m_rejects, m_columns}, reporter);
    const bool goOn = pump.Begin(source.ColumnNames()) && pump.Run();
    reporter.Finish();
    m_hasLostRows = m_hasLostRows || reporter.HasLostRows();
    return goOn;
}

void COneOutput::Finish() {
    if (!m_output)
        return;
    m_output->Close();
    if (m_rejects != nullptr)
        m_rejects->Place();
    m_output->Replace();
}

} // namespace NSTQ::Tool
