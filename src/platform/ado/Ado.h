// ADO as far as the readers need it: connection, record set, its fields, and the table schema.
//
// Names and meaning are those of ADO; a call that fails throws _com_error. The classes are created by ProgID
// ("ADODB.Connection", "ADODB.Recordset") through platform/automation/Com.h, so that a test can replace them with
// scripted objects.
//
// One thing differs from ADO, so that reading a cell copies and allocates nothing: Fields, Field and the values are
// not returned as counted copies. They belong to the record set: a collection or field is valid until the record set
// is closed, a value and its text until MoveNext or Close.
//
// HRESULTs of these calls, in addition to those in platform/ado/Provider.h:
//   adErrObjectClosed, adErrObjectOpen   a call in the wrong state
//   adErrItemNotFound                    no field of that index or name
//   adErrNoCurrentRecord                 past the last row
//   adErrInvalidArgument                 an option that this layer does not have
//   adErrProviderNotFound                no provider for what the connection string asks for
//   DB_E_BADINITSTRING                   a malformed connection string
//   DB_E_ERRORSINCOMMAND                 a malformed statement
#pragma once

#include "platform/automation/Com.h"
#include "platform/automation/Variant.h"
#include "tqcAccess/DataType.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string_view>

namespace NSTQ::Platform {

inline constexpr HRESULT adErrInvalidArgument = MakeHresult(0x800A0BB9);
inline constexpr HRESULT DB_E_ERRORSINCOMMAND = MakeHresult(0x80040E14);
inline constexpr HRESULT DB_E_BADINITSTRING = MakeHresult(0x80040E73);

inline constexpr LONG adUseServer = 2;
inline constexpr LONG adUseClient = 3;
inline constexpr LONG adConnectUnspecified = -1;
inline constexpr LONG adOpenForwardOnly = 0;
inline constexpr LONG adLockReadOnly = 1;
inline constexpr LONG adCmdText = 1;
inline constexpr LONG adSchemaTables = 20;

/// One column at the current row.
class Field {
public:
    virtual const VARIANT& GetValue() = 0;
    virtual std::u16string_view GetName() = 0;
    /// The type of the column, with precision and scale of adNumeric and the size of texts and bytes; see SFieldType
    /// in tqcAccess/DataType.h. Does not depend on the current row.
    virtual EDataType GetType() = 0;
    virtual std::uint8_t GetPrecision() = 0;
    virtual std::uint8_t GetNumericScale() = 0;
    virtual LONG GetDefinedSize() = 0;
    /// Not part of ADO, whose Value is exact: the whole value, where GetValue returns it as a reader shows it, with
    /// bytes as a text of digits. Valid until GetValue or GetExactValue of any field, MoveNext or Close.
    virtual SExactValue GetExactValue() = 0;

protected:
    ~Field() = default;
};

/// The columns of an open record set.
class Fields {
public:
    virtual LONG GetCount() = 0;
    /// By position from 0 (VT_I4) or by name, ignoring the case of ASCII letters (VT_BSTR).
    virtual Field* GetItem(const VARIANT& index) = 0;

protected:
    ~Fields() = default;
};

/// Rows, read forward once. Its rows do not need the connection to stay open.
class _Recordset : public IUnknown {
public:
    /// Of a closed record set; adUseClient or adUseServer, which are equivalent: the count is always known.
    virtual void PutCursorLocation(LONG location) = 0;
    /// `source` is a statement (VT_BSTR), `activeConnection` an open _Connection (VT_DISPATCH); the rest must be
    /// adOpenForwardOnly, adLockReadOnly and adCmdText. Then the first row is current.
    virtual void Open(const VARIANT& source, const VARIANT& activeConnection, LONG cursorType, LONG lockType,
                      LONG options) = 0;
    virtual std::int64_t GetRecordCount() = 0;
    virtual Fields* GetFields() = 0;
    /// True once the position is past the last row.
    virtual bool GetEOF() = 0;
    /// A failure is final: the position is lost, and until Close every call that needs it fails in the same way.
    virtual void MoveNext() = 0;
    /// Not part of ADO: true when the current row is known to have no value; false means unknown. A very large used
    /// range of a sheet is mostly empty.
    virtual bool IsNullRow() { return false; }
    /// Not part of ADO: the texts of the current row that need no conversion; see IRowSource in
    /// platform/ado/Provider.h.
    virtual void GetPlainTexts(std::span<std::string_view> texts, bool /*keepsLineEnds*/) {
        std::ranges::fill(texts, std::string_view());
    }
    virtual void Close() = 0;

protected:
    ~_Recordset() = default;
};

class _Connection : public IUnknown {
public:
    /// Not part of ADO: whether the rows of the sources that Open opens may be read ahead by a thread, as with
    /// "Read Ahead=YES" in a connection string. A source that cannot do that ignores it.
    virtual void PutReadAhead(bool) {}
    /// Opens the source of the connection string (see platform/ado/ConnectionString.h). User and password are part of
    /// that string, so both arguments must be empty and `options` adConnectUnspecified.
    virtual void Open(BSTR connectionString, BSTR userId, BSTR password, LONG options) = 0;
    /// adSchemaTables: a record set with the columns TABLE_NAME and TABLE_TYPE, in the provider's order.
    virtual CComPtr<_Recordset> OpenSchema(LONG schema) = 0;
    virtual void Close() = 0;

protected:
    ~_Connection() = default;
};

} // namespace NSTQ::Platform
