#include "CTableSource.h"

#include "SCContentProbe.h"
#include "SCNameMatch.h"
#include "SCPassWord.h"
#include "tqcAccess/CodePage.h"

#include <algorithm>
#include <charconv>

namespace NSTQ::Tool {
namespace {

std::string Join(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

/// Counted from 1; none when the text is not the number of any of `count` tables.
std::optional<std::size_t> ReadNumber(const std::string& text, std::size_t count) {
    std::size_t number = 0;
    const char* const end = text.data() + text.size();
    const bool isNumber = std::from_chars(text.data(), end, number).ptr == end;
    return isNumber && number > 0 && number <= count ? std::optional(number) : std::nullopt;
}

} // namespace

CTableSource::CTableSource(const SOptions& options, const CInputFile& input, SCDeclareConstant::ESourceFileType type)
    : CLockableSource(options, input, Platform::CP_UTF8), m_type(type) {
    Describe(m_info, type);
}

bool CTableSource::NamesItsColumns() const {
    return m_type == SCDeclareConstant::SFT_MDB || m_type == SCDeclareConstant::SFT_ACCDB;
}

std::unique_ptr<ISourceReader> CTableSource::OpenReader() {
    SCContentProbe::RefuseUtf16(m_input.Name(), m_input.Head().Bytes());
    PrepareTables(true);
    const std::vector<std::string> names = TableNames();
    const std::string table = SelectTable(names);
    m_info.SetKeepLineEnds(true);
    // As many columns as any sheet has; the program cuts them itself and says so.
    constexpr DWORD columnsMax = 16384;
    auto reader = std::make_unique<CTableReader>(std::max(columnsMax, m_options.maxFields) + 1, maxLength, maxLength);
    if (!reader->FileOpen(&m_info))
        throw DescribeUnopened(Look(table, *reader),
                               names.size() > 1 ? "; see the others with: tqc list " + m_input.Name() : "");
    // Those of a wide sheet, which nobody asks for, need not fit a row.
    if (m_options.header && NamesItsColumns())
        TakeColumnNames(*reader);
    return reader;
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

/// The place of the sheet or table that the options name, by its name or else by its number; none when there is no
/// such one. Throws CFailure when several could be meant.
std::optional<std::size_t> CTableSource::FindTable(const std::vector<std::string>& names) const {
    const std::string& wanted = m_options.sheet;
    if (wanted.empty())
        return names.empty() ? std::nullopt : std::optional<std::size_t>(0);
    const std::vector<std::size_t> found = SCNameMatch::Find(names, wanted);
    if (found.size() > 1) {
        std::vector<std::string> meant;
        meant.reserve(found.size());
        for (const std::size_t at : found)
            meant.push_back(names[at]);
        throw CFailure(EExitStatus::NotFound, m_input.Name(),
                       "several " + TableKind() + "s match \"" + wanted + "\" if case is ignored: " + Join(meant) +
                           "; give the exact name");
    }
    if (!found.empty())
        return found[0];
    const auto number = ReadNumber(wanted, names.size());
    return number ? std::optional(*number - 1) : std::nullopt;
}

/// Chooses the sheet or table that the options name, and tells its name.
std::string CTableSource::SelectTable(const std::vector<std::string>& names) {
    const auto found = FindTable(names);
    if (found && m_info.SetSelectSchemaIndx(static_cast<DWORD>(*found)))
        return names[*found];
    const std::string kind = TableKind();
    if (names.empty())
        throw CFailure(EExitStatus::NotFound, m_input.Name(),
                       NamesItsColumns() ? "no table in it" : "no worksheet in it");
    throw CFailure(EExitStatus::NotFound, m_input.Name(),
                   "no " + kind + " \"" + m_options.sheet + "\"; " + kind + "s: " + Join(names) + " (see: tqc list " +
                       m_input.Name() + ")");
}

void CTableSource::TakeColumnNames(CTableReader& reader) {
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    reader.GetFieldsName(fields, lengths, count);
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
    return {isTooLarge ? EExitStatus::Limit : EExitStatus::Unsupported, m_input.Name(),
            TableKind() + " \"" + table.name + "\" cannot be opened: " + reason + hint};
}

} // namespace NSTQ::Tool
