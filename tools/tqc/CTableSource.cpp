#include "CTableSource.h"

#include "SCContentProbe.h"
#include "SCPassWord.h"
#include "SCTableSelection.h"
#include "tqcAccess/CodePage.h"

#include <algorithm>

namespace NSTQ::Tool {

CTableSource::CTableSource(const SOptions& options, const CInputFile& input, SCDeclareConstant::ESourceFileType type)
    : CLockableSource(options, input, Platform::CP_UTF8), m_type(type) {
    Describe(m_info, type);
}

bool CTableSource::NamesItsColumns() const {
    return m_type == SCDeclareConstant::SFT_MDB || m_type == SCDeclareConstant::SFT_ACCDB;
}

std::unique_ptr<ISourceReader> CTableSource::OpenReader() {
    PrepareToRead();
    const std::vector<std::string> names = TableNames();
    const std::size_t position = SCTableSelection::FindOne(m_options, names, {m_input.Name(), TableKind()});
    auto reader = MakeReader();
    if (!TryToOpen(*reader, position, true))
        throw DescribeUnopened(Look(names[position], *reader),
                               names.size() > 1 ? "; see the others with: tqc list " + m_input.Name() : "");
    return reader;
}

const std::vector<std::string>& CTableSource::SelectTables(std::vector<std::size_t>& selected) {
    PrepareToRead();
    m_names = TableNames();
    selected = SCTableSelection::Find(m_options, m_names, {m_input.Name(), TableKind()});
    return m_names;
}

ISourceReader& CTableSource::OpenTable(std::size_t position) {
    const bool isFirst = !m_reader;
    if (isFirst)
        m_reader = MakeReader();
    if (!TryToOpen(*m_reader, position, isFirst))
        throw DescribeUnopened(Look(m_names[position], *m_reader), "");
    return *m_reader;
}

void CTableSource::PrepareToRead() {
    SCContentProbe::RefuseUtf16(m_input.Name(), m_input.Head().Bytes());
    if (m_options.skip > 0 && NamesItsColumns())
        throw CFailure(EExitStatus::Usage, m_input.Name(),
                       "--skip leaves out lines before the header row, which a table has not; try --skip-rows");
    PrepareTables(true);
    m_info.SetKeepLineEnds(true);
    // Several inputs at the same time keep the processors busy without it.
    m_info.SetReadAhead(m_options.jobs <= 1);
}

/// For as many columns as any sheet has; the program cuts them itself and says so.
std::unique_ptr<CTableReader> CTableSource::MakeReader() const {
    constexpr DWORD columnsMax = 16384;
    return std::make_unique<CTableReader>(std::max(columnsMax, m_options.maxFields) + 1, maxLength, maxLength);
}

/// Only the first one opens the source.
bool CTableSource::TryToOpen(CTableReader& reader, std::size_t position, bool isFirst) {
    m_info.SetSelectSchemaIndx(static_cast<DWORD>(position));
    if (!(isFirst ? reader.FileOpen(&m_info) : reader.OpenTable(&m_info)))
        return false;
    // Those of a wide sheet, which nobody asks for, need not fit a row.
    if ((m_options.header || m_options.SelectsColumns()) && NamesItsColumns())
        TakeColumnNames(reader);
    return true;
}

void CTableSource::PrepareTables(bool mayAsk) {
    if (Prepare(m_info, mayAsk) != CSourceDataInfo::SDO_DATABASE)
        ExplainListing();
}

bool CTableSource::IsLocked() const {
    try {
        ExplainListing();
    } catch (const Platform::_com_error& error) {
        return SCPassWord::IsRefusal(error);
    } catch (const CFailure&) {
        return false;
    }
}

/// Raises what made the listing fail, which the preparation does not say.
void CTableSource::ExplainListing() const {
    const char* connection = nullptr;
    DWORD size = 0;
    DWORD count = 0;
    if (m_info.GetConnectString(connection))
        NSTQCore::CADOOperater::GetSchemaNameSize(size, count, connection);
    throw CFailure(EExitStatus::Unsupported, m_input.Name(), "cannot be read");
}

/// The names as people know them. In those of sheets the library leaves the doubled quotes of the listing.
std::vector<std::string> CTableSource::TableNames() const {
    std::vector<char*> listed;
    m_info.GetSchemaName(listed);
    std::vector<std::string> names(listed.begin(), listed.end());
    if (!NamesItsColumns())
        for (std::string& name : names)
            for (std::size_t at = name.find("''"); at != std::string::npos; at = name.find("''", at + 1))
                name.erase(at, 1);
    return names;
}

void CTableSource::TakeColumnNames(CTableReader& reader) {
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    reader.GetFieldsName(fields, lengths, count);
    m_columnNames.clear();
    // The lengths of names count the NUL.
    for (DWORD i = 0; i < count; ++i)
        m_columnNames.emplace_back(fields[i], lengths[i] - 1U);
}

std::vector<std::string> CTableSource::ListNames() {
    PrepareTables(false);
    return TableNames();
}

std::vector<CTableSource::STable> CTableSource::ListTables() {
    PrepareTables(true);
    const std::vector<std::string> names = TableNames();
    std::vector<STable> tables;
    CTableReader reader(maxLength, maxLength, maxLength);
    for (std::size_t i = 0; i < names.size(); ++i) {
        m_info.SetSelectSchemaIndx(static_cast<DWORD>(i));
        const bool isOpen = i == 0 ? reader.FileOpen(&m_info) : reader.OpenTable(&m_info);
        tables.push_back(Look(names[i], reader));
        if (isOpen)
            tables.back().size = {reader.GetMaxRowNum(), reader.GetFieldCnt()};
    }
    return tables;
}

/// A sheet or table, and why it is not open if it is not.
CTableSource::STable CTableSource::Look(const std::string& name, CTableReader& reader) {
    return {name, reader.GetErrorRet(), reader.GetErrorDescription(), std::nullopt};
}

CFailure CTableSource::DescribeUnopened(const STable& table, const std::string& hint) const {
    // No reason at all is given only where there is no room for one.
    const bool isTooLarge = table.error == Platform::DB_E_DATAOVERFLOW || table.error == Platform::E_OUTOFMEMORY ||
                            (table.error == Platform::S_OK && table.reason.empty());
    std::string reason = table.reason.empty() ? "not enough memory" : table.reason;
    if (const std::string prefix = m_input.Path() + ": "; reason.starts_with(prefix))
        reason.erase(0, prefix.size());
    return {isTooLarge ? EExitStatus::Limit : EExitStatus::Unsupported,
            m_input.Name() + ": " + TableKind() + " \"" + table.name + "\" cannot be opened: " + reason + hint};
}

} // namespace NSTQ::Tool
