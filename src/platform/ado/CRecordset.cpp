#include "platform/ado/CRecordset.h"

#include "platform/ado/CConnection.h"
#include "platform/ado/FindField.h"
#include "platform/ado/Statement.h"

#include <string>

namespace NSTQ::Platform {

CRecordset::CRecordset() = default;

void CRecordset::RequireClosed() const {
    if (m_rows)
        throw _com_error(adErrObjectOpen, "the record set is open already");
}

IRowSource& CRecordset::GetRows() const {
    if (!m_rows)
        throw _com_error(adErrObjectClosed, "the record set is not open");
    return *m_rows;
}

void CRecordset::RequirePosition() const {
    GetRows();
    if (m_lost)
        throw *m_lost;
}

IRowSource& CRecordset::GetCurrentRow() const {
    RequirePosition();
    if (m_isEof)
        throw _com_error(adErrNoCurrentRecord, "there is no current row: all rows have been read");
    return *m_rows;
}

void CRecordset::PutCursorLocation(LONG location) {
    RequireClosed();
    if (location != adUseClient && location != adUseServer)
        throw _com_error(adErrInvalidArgument, "unknown cursor location " + std::to_string(location));
}

void CRecordset::Open(const VARIANT& source, const VARIANT& activeConnection, LONG cursorType, LONG lockType,
                      LONG options) {
    RequireClosed();
    if (source.vt != VT_BSTR || activeConnection.vt != VT_DISPATCH || cursorType != adOpenForwardOnly ||
        lockType != adLockReadOnly || options != adCmdText)
        throw _com_error(adErrInvalidArgument, "a record set opens read-only, forward-only, by a statement");
    auto* const connection = dynamic_cast<CConnection*>(activeConnection.pdispVal);
    if (connection == nullptr)
        throw _com_error(adErrInvalidArgument, "a record set opens on a connection of this layer");
    OpenRows(connection->GetSource().OpenTable(ParseStatement(BstrView(source.bstrVal))));
}

void CRecordset::OpenRows(std::unique_ptr<IRowSource> rows) {
    if (rows == nullptr)
        throw _com_error(E_FAIL, "the provider returned no rows");
    std::vector<CField> fields;
    const std::size_t count = rows->GetColumnNames().size();
    fields.reserve(count);
    for (std::size_t column = 0; column < count; ++column)
        fields.emplace_back(*this, column);
    m_isEof = !rows->MoveNext();
    m_fields.m_fields = std::move(fields);
    m_rows = std::move(rows);
}

std::int64_t CRecordset::GetRecordCount() {
    return GetRows().GetRowCount();
}

Fields* CRecordset::GetFields() {
    GetRows();
    return &m_fields;
}

bool CRecordset::GetEOF() {
    RequirePosition();
    return m_isEof;
}

void CRecordset::MoveNext() {
    IRowSource& rows = GetCurrentRow();
    try {
        m_isEof = !rows.MoveNext();
    } catch (const _com_error& error) {
        m_lost = error;
        throw;
    } catch (...) {
        m_lost.emplace(E_FAIL, "the position was lost when reading a row failed");
        throw;
    }
}

void CRecordset::Close() {
    GetRows();
    m_fields.m_fields.clear();
    m_rows.reset();
    m_lost.reset();
}

Field* CRecordset::CFields::GetItem(const VARIANT& index) {
    return FindField(m_fields, index);
}

} // namespace NSTQ::Platform
