#include "platform/windows/ado/CSystemRecordset.h"

#include "platform/ado/FindField.h"
#include "platform/automation/BytesText.h"
#include "platform/windows/ado/SystemValue.h"

#include <algorithm>

namespace NSTQ::Platform {

namespace {

bool HasDefinedSize(EDataType type) {
    using enum EDataType;
    constexpr EDataType types[] = {adBinary, adVarBinary, adChar, adVarChar, adWChar, adVarWChar};
    return std::find(std::begin(types), std::end(types), type) != std::end(types);
}

} // namespace

CSystemRecordset::CSystemRecordset(FMakeSystemObject make) : m_make(make) {}

void CSystemRecordset::RequireClosed() const {
    if (m_object)
        throw _com_error(adErrObjectOpen, "the record set is open already");
}

void CSystemRecordset::RequireOpen() const {
    if (!m_object)
        throw _com_error(adErrObjectClosed, "the record set is not open");
}

void CSystemRecordset::RequirePosition() const {
    RequireOpen();
    if (m_lost)
        throw *m_lost;
}

void CSystemRecordset::RequireRow() const {
    RequirePosition();
    if (m_isEof)
        throw _com_error(adErrNoCurrentRecord, "there is no current row: all rows have been read");
}

void CSystemRecordset::PutCursorLocation(LONG location) {
    RequireClosed();
    m_cursorLocation = location;
}

void CSystemRecordset::Open(const VARIANT& source, const VARIANT& activeConnection, LONG cursorType, LONG lockType,
                            LONG options) {
    RequireClosed();
    if (source.vt != VT_BSTR || activeConnection.vt != VT_DISPATCH)
        throw _com_error(adErrInvalidArgument, "a record set opens by a statement on a connection");
    const auto* const connection = dynamic_cast<CSystemConnection*>(activeConnection.pdispVal);
    if (connection == nullptr)
        throw _com_error(adErrInvalidArgument, "a record set of the system opens on a connection of the system");
    ::IDispatch* const active = connection->GetObjectOfSystem().Get();
    CDispatch object = m_make(L"ADODB.Recordset");
    CMember cursorLocation(L"CursorLocation");
    CMember open(L"Open");
    object.Write(cursorLocation, m_cursorLocation);
    object.Call(open, {BstrView(source.bstrVal), active, cursorType, lockType, options});
    Take(std::move(object));
}

void CSystemRecordset::Take(CDispatch object) {
    RequireClosed();
    CMember fields(L"Fields");
    CMember count(L"Count");
    CMember item(L"Item");
    const CDispatch collection = object.ReadObject(fields);
    const std::int64_t columns = collection.ReadNumber(count);
    std::deque<CField> columnFields;
    for (LONG column = 0; column < columns; ++column)
        columnFields.emplace_back(*this, collection.ReadObject(item, {column}));
    m_isEof = object.ReadNumber(m_eofMember) != 0;
    m_fields.m_fields.swap(columnFields);
    m_object = std::move(object);
    ++m_row;
}

std::int64_t CSystemRecordset::GetRecordCount() {
    RequireOpen();
    CMember recordCount(L"RecordCount");
    return m_object.ReadNumber(recordCount);
}

Fields* CSystemRecordset::GetFields() {
    RequireOpen();
    return &m_fields;
}

bool CSystemRecordset::GetEOF() {
    RequirePosition();
    return m_isEof;
}

void CSystemRecordset::MoveNext() {
    RequireRow();
    ++m_row;
    try {
        m_object.Call(m_moveNextMember);
        m_isEof = m_object.ReadNumber(m_eofMember) != 0;
    } catch (const _com_error& error) {
        m_lost = error;
        throw;
    } catch (...) {
        m_lost.emplace(E_FAIL, "the position was lost when reading a row failed");
        throw;
    }
}

void CSystemRecordset::Close() {
    RequireOpen();
    m_fields.m_fields.clear();
    m_lost.reset();
    const CDispatch object = std::move(m_object);
    CMember close(L"Close");
    object.Call(close);
}

CSystemRecordset::CField::CField(CSystemRecordset& owner, CDispatch object)
    : m_owner(owner), m_object(std::move(object)), m_name(m_object.ReadText(owner.m_fieldMembers.name)) {
    VariantInit(&m_value);
}

void CSystemRecordset::CField::Fetch() {
    m_owner.RequireRow();
    if (m_row == m_owner.m_row)
        return;
    m_row = 0;
    m_isConverted = false;
    m_object.Read(m_owner.m_fieldMembers.value, m_fetched);
    if (!IsBytes(m_fetched.Value())) {
        ConvertValue(m_fetched.Value(), m_value, m_text);
        m_fetched.Clear();
        m_isConverted = true;
    }
    m_row = m_owner.m_row;
}

const VARIANT& CSystemRecordset::CField::GetValue() {
    Fetch();
    if (!m_isConverted) {
        AssignBytesText(m_text, GetBytes(m_fetched.Value()));
        m_value.vt = VT_BSTR;
        m_value.bstrVal = m_text.Get();
        m_isConverted = true;
    }
    return m_value;
}

SExactValue CSystemRecordset::CField::GetExactValue() {
    static constexpr VARIANT marker{.vt = VT_ARRAY | VT_UI1, .llVal = 0};
    Fetch();
    if (IsBytes(m_fetched.Value()))
        return {marker, GetBytes(m_fetched.Value())};
    return {GetValue(), {}};
}

/// The system also has numbers for what has no meaning for a type; they are left out, as tqcAccess/DataType.h says.
const SFieldType& CSystemRecordset::CField::GetFieldType() {
    if (m_type)
        return *m_type;
    SFieldMembers& members = m_owner.m_fieldMembers;
    SFieldType type;
    type.type = static_cast<EDataType>(m_object.ReadNumber(members.type));
    if (type.type == EDataType::adNumeric) {
        type.precision = static_cast<unsigned char>(m_object.ReadNumber(members.precision));
        type.numericScale = static_cast<unsigned char>(m_object.ReadNumber(members.numericScale));
    }
    if (HasDefinedSize(type.type))
        type.definedSize = static_cast<DWORD>(m_object.ReadNumber(members.definedSize));
    return m_type.emplace(type);
}

Field* CSystemRecordset::CFields::GetItem(const VARIANT& index) {
    return FindField(m_fields, index);
}

} // namespace NSTQ::Platform
