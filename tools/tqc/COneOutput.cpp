#include "COneOutput.h"

#include "CReporter.h"
#include "CTextFile.h"
#include "CTypedPump.h"
#include "SCFormOptions.h"
#include "SCSources.h"
#include "SCTableSelection.h"

namespace NSTQ::Tool {

bool COneOutput::Append(const std::string& file, CInputReport& report) {
    const CInputFile input(m_options, file);
    try {
        if (m_options.format != SOptions::EFormat::Csv && SCSources::HasTables(input))
            return AppendTables(input, report);
        const auto source = SCSources::Open(m_options, input);
        const auto reader = source->OpenReader();
        return AppendRows(input, {*source, *reader, input.Name(), ""}, report);
    } catch (const Platform::_com_error& error) {
        throw input.Explain(error);
    }
}

bool COneOutput::AppendRows(const CInputFile& input, const SRows& rows, CInputReport& report) {
    const ISource& source = rows.source;
    BeginTable(input, "");
    if (m_rejects != nullptr)
        m_rejects->SetSource(input.Name(), rows.table, source.Text());
    CReporter reporter(rows.subject, m_options.quiet, report);
    if (source.Text() != nullptr)
        for (const std::string& doubt : source.Text()->DescribeDoubts())
            reporter.Note(doubt);
    CRowPump pump(m_options, rows.reader, {*m_output.rows, m_rejects, m_columns}, reporter);
    const bool goOn = pump.Begin(source.ColumnNames()) && pump.Run();
    m_output.rows->EndTable();
    Finish(reporter);
    return goOn;
}

/// A sheet or table of a workbook or database with its types.
bool COneOutput::AppendTables(const CInputFile& input, CInputReport& report) {
    const CLibrarySource source(m_options, input, CTypedPump::HasHeaderRow(m_options));
    const auto& names = source.TableNames();
    const SCTableSelection::SSubject subject{input.Name(), source.TableKind()};
    if (m_options.format != SOptions::EFormat::Sqlite)
        return AppendTable(input, source, {SCTableSelection::FindOne(m_options, names, subject), input.Name()},
                           report);
    for (const std::size_t table : SCTableSelection::Find(m_options, names, subject))
        AppendTable(input, source, {table, input.Name() + ": " + source.TableKind() + " \"" + names[table] + '"'},
                    report);
    return true;
}

bool COneOutput::AppendTable(const CInputFile& input, const CLibrarySource& source, const STable& table,
                             CInputReport& report) {
    SCFormOptions::CheckTyped(m_options, input.Name());
    for (CReporter reporter(table.subject, m_options.quiet, report);; reporter.StartAgain()) {
        CLibraryRows rows = source.Open(table.position);
        BeginTable(input, source.TableNames()[table.position]);
        CTypedPump pump(m_options, {rows, source.IsWorkbook()}, {*m_output.typed, m_columns}, reporter);
        pump.Begin();
        const bool goOn = pump.Run();
        if (!m_output.rows->EndTable())
            continue;
        Finish(reporter);
        return goOn;
    }
}

/// Tables have columns of their own.
void COneOutput::BeginTable(const CInputFile& input, const std::string& table) {
    Open(input);
    if (m_options.format == SOptions::EFormat::Sqlite)
        m_columns = CColumns();
    m_output.rows->BeginTable(input.Name(), table);
}

/// Only when there are rows, so that nothing is written to a device or pipe if the file cannot be read.
void COneOutput::Open(const CInputFile& input) {
    if (!m_output.rows)
        m_output = SCOutputs::Open(m_options, m_name);
    if (m_output.rows->IsStandardOutput() && input.Head().IsFileOf(Port::GetStandardStream(Port::EStream::Output)))
        throw CFailure(EExitStatus::Usage, input.Name(), "standard output is the input file; use -o");
}

void COneOutput::Finish(CReporter& reporter) {
    for (std::string note = m_output.rows->TakeNote(); !note.empty(); note = m_output.rows->TakeNote())
        reporter.Note(note);
    reporter.Finish();
    m_hasLostRows = m_hasLostRows || reporter.HasLostRows();
}

void COneOutput::Finish() {
    if (!m_output.rows)
        return;
    m_output.rows->Close();
    if (m_rejects != nullptr)
        m_rejects->Place();
    m_output.rows->Replace();
}

} // namespace NSTQ::Tool
