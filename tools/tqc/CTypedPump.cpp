#include "CTypedPump.h"

#include "CFailure.h"
#include "SCValueText.h"
#include "tqcAccess/DataType.h"

namespace NSTQ::Tool {
namespace {

std::vector<std::string> NamesOf(const std::vector<CLibraryRows::SColumn>& columns) {
    std::vector<std::string> names;
    names.reserve(columns.size());
    for (const CLibraryRows::SColumn& column : columns)
        names.push_back(column.name);
    return names;
}

} // namespace

CTypedPump::CTypedPump(const SOptions& options, const SSource& source, const STargets& targets, CReporter& reporter)
    : m_options(options), m_source(source), m_targets(targets), m_reporter(reporter),
      m_selection(options.columns, options.excludedColumns), m_columns(source.rows.Columns()) {}

void CTypedPump::Begin() {
    if (m_options.skip > 0)
        SkipToHeader();
    else if (m_options.header && m_source.isSheet)
        m_row = 1;
    // Numbers of sheets, all of which are floating-point numbers, may be whole ones.
    for (CLibraryRows::SColumn& column : m_columns)
        if (m_source.isSheet && column.type == static_cast<int>(EDataType::adDouble))
            column.type = static_cast<int>(EDataType::adNumeric);
    SelectColumns();
    const std::vector<std::string> names = NamesOf(m_columns);
    if (!m_options.header)
        m_targets.columns.TakeCount(m_reporter.File(), static_cast<DWORD>(names.size()));
    if (!m_options.header || m_targets.columns.TakeNames(m_reporter.File(), names))
        m_targets.output.SetColumns(m_columns, m_options.header);
}

void CTypedPump::SkipToHeader() {
    if (!m_source.isSheet)
        throw CFailure(EExitStatus::Usage, m_reporter.File(),
                       "--skip leaves out lines before the header row, which a table has not; try --skip-rows");
    while (m_row < m_options.skip && m_source.rows.Next())
        ++m_row;
    if (m_row < m_options.skip)
        m_reporter.Note("nothing is left after the first " + std::to_string(m_options.skip) +
                        " rows; try a smaller --skip");
    // The rows before the header row count for the types of the columns, so these say nothing about the others.
    for (CLibraryRows::SColumn& column : m_columns)
        column.type = CLibraryRows::mixedType;
    if (m_options.header && m_source.rows.Next())
        TakeNamesOfRow();
}

void CTypedPump::TakeNamesOfRow() {
    ++m_row;
    for (std::size_t i = 0; i < m_columns.size(); ++i)
        if (std::string name = SCValueText::Of(m_source.rows.Values()[i]); !name.empty())
            m_columns[i].name = std::move(name);
}

void CTypedPump::SelectColumns() {
    if (m_selection.IsIdle())
        return;
    const std::vector<std::string> names = NamesOf(m_columns);
    if (m_options.header || !m_source.isSheet)
        m_selection.Resolve(m_reporter.File(), names);
    else
        m_selection.Resolve(m_reporter.File(), names.size());
    std::vector<CLibraryRows::SColumn> selected;
    for (const std::size_t index : m_selection.Indexes())
        selected.push_back(m_columns[index]);
    m_columns = std::move(selected);
    m_values.resize(m_columns.size());
}

bool CTypedPump::Run() {
    std::uint64_t skipped = 0;
    for (std::uint64_t written = 0; written < m_options.limit && m_source.rows.Next();) {
        ++m_row;
        m_reporter.Progress().Show(m_source.rows.Position());
        if (skipped < m_options.skipRows) {
            ++skipped;
            continue;
        }
        ++written;
        if (!WriteRow())
            return false;
    }
    return true;
}

bool CTypedPump::WriteRow() {
    std::span<const tqc_value> values = m_source.rows.Values();
    if (!m_selection.IsIdle()) {
        for (std::size_t i = 0; i < m_values.size(); ++i)
            m_values[i] = values[m_selection.Indexes()[i]];
        values = m_values;
    }
    m_loss.clear();
    const bool goOn = m_targets.output.WriteValues(values, m_loss);
    if (!m_loss.empty())
        m_reporter.ReportRow("row " + std::to_string(m_row), m_loss);
    return goOn;
}

} // namespace NSTQ::Tool
