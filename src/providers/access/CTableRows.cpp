#include "providers/access/CTableRows.h"

#include "providers/common/CSourceError.h"

namespace NSTQ::Providers {

using namespace Platform;

CTableRows::CTableRows(std::shared_ptr<const CDatabase> database, STableDefinition table)
    : m_database(std::move(database)), m_table(std::move(table)), m_scan(*m_database, m_table),
      m_decoder(*m_database) {
    m_names.reserve(m_table.columns.size());
    m_types.reserve(m_table.columns.size());
    for (const SColumn& column : m_table.columns) {
        m_names.push_back(column.name);
        m_types.push_back(m_decoder.GetType(column));
    }
}

bool CTableRows::MoveNext() {
    return RaiseAsComError(m_database->GetPath(), [this] { return m_scan.MoveNext(); });
}

const VARIANT& CTableRows::GetValue(std::size_t column) {
    RaiseAsComError(m_database->GetPath(),
                    [&] { m_decoder.Decode(m_table.columns[column], m_scan.GetFields(), m_value); });
    return m_value.value;
}

SExactValue CTableRows::GetExactValue(std::size_t column) {
    RaiseAsComError(m_database->GetPath(),
                    [&] { m_decoder.DecodeExactly(m_table.columns[column], m_scan.GetFields(), m_value); });
    return {m_value.value, m_value.bytes};
}

void CTableRows::GetPlainTexts(std::span<std::string_view> texts, bool keepsLineEnds) {
    StartPlainTexts(keepsLineEnds);
    for (std::size_t i = 0; i < texts.size(); ++i)
        texts[i] = GetPlainText(i);
}

std::string_view CTableRows::GetPlainText(std::size_t column) {
    return m_decoder.PutPlain(m_table.columns[column], m_scan.GetFields(), m_plain, m_value);
}

std::span<const unsigned char> CTableRows::GetBytes(std::size_t column) {
    return RaiseAsComError(m_database->GetPath(),
                           [&] { return m_decoder.GetBytes(m_table.columns[column], m_scan.GetFields()); });
}

} // namespace NSTQ::Providers
