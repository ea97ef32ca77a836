// ADO objects that do what a script says: hand out given rows, fail where told, count their calls.
//
// One script is in force at a time; while it lives, its objects stand behind the two ProgIDs.
#pragma once

#include "platform/ado/Ado.h"

#include <array>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace NSTQ::Tests {

enum class Op {
    ConnectionOpen,
    OpenSchema,
    ConnectionClose,
    PutCursorLocation,
    RecordsetOpen,
    GetRecordCount,
    GetFields,
    GetCount,
    GetItem,
    GetValue,
    GetName,
    GetEOF,
    MoveNext,
    RecordsetClose
};
inline constexpr std::size_t opCount = 14;

struct Null {};
/// What a cell holds: nothing, a text, a number, a whole number, a truth value, or an error value.
struct Date {
    double days;
};
struct ErrorValue {};
using Cell = std::variant<Null, std::u16string, double, bool, Date, ErrorValue>;

inline void SetVariant(Platform::VARIANT& value, const Cell& cell) {
    using namespace NSTQ::Platform;
    VariantClear(&value);
    value.vt = VT_NULL;
    if (const auto* text = std::get_if<std::u16string>(&cell)) {
        value.vt = VT_BSTR;
        value.bstrVal = SysAllocStringLen(text->data(), static_cast<DWORD>(text->size()));
    } else if (const auto* number = std::get_if<double>(&cell)) {
        value.vt = VT_R8;
        value.dblVal = *number;
    } else if (const auto* truth = std::get_if<bool>(&cell)) {
        value.vt = VT_BOOL;
        value.boolVal = *truth ? VARIANT_TRUE : VARIANT_FALSE;
    } else if (const auto* date = std::get_if<Date>(&cell)) {
        value.vt = VT_DATE;
        value.date = date->days;
    } else if (std::holds_alternative<ErrorValue>(cell)) {
        value.vt = VT_ERROR;
        value.scode = E_FAIL;
    }
}

struct Table {
    std::vector<std::u16string> columns;
    std::vector<std::vector<Cell>> rows;
};

class CScript {
public:
    CScript();
    CScript(const CScript&) = delete;
    CScript& operator=(const CScript&) = delete;

    /// Lists these (name, type) pairs in the table schema.
    void SetSchema(const std::vector<std::pair<std::u16string, std::u16string>>& tables) {
        schema = {{u"TABLE_NAME", u"TABLE_TYPE"}, {}};
        for (const auto& [name, type] : tables)
            schema.rows.push_back({name, type});
    }
    /// The nth call of `op` from now on fails with `hr`.
    void FailAt(Op op, Platform::HRESULT hr, int nth = 1) {
        failing = op;
        failure = hr;
        failAt = Calls(op) + nth;
    }
    int& Calls(Op op) { return calls[static_cast<std::size_t>(op)]; }
    void Do(Op op) {
        if (++Calls(op) == failAt && op == failing)
            throw Platform::_com_error(failure, "scripted");
    }

    Table table{{u"ID", u"Name"}, {}};
    Table schema;
    std::int64_t recordCount = -2; ///< -2: the number of rows
    bool hasConnection = true;
    bool hasRecordset = true;
    bool hasFields = true;
    bool hasField = true;
    int liveObjects = 0;
    std::u16string connectionString;
    std::u16string statement;
    LONG cursorLocation = 0;

private:
    std::array<int, opCount> calls{};
    Op failing = Op::ConnectionOpen;
    Platform::HRESULT failure = 0;
    int failAt = 0;
    Platform::CClassRegistration m_connection;
    Platform::CClassRegistration m_recordset;
};

class CScriptedRecordset final : public Platform::CComObject<Platform::_Recordset>,
                                 private Platform::Fields,
                                 private Platform::Field {
public:
    explicit CScriptedRecordset(CScript& script, const Table* pOpen = nullptr) : m_script(script), m_pTable(pOpen) {
        Load();
        ++script.liveObjects;
    }
    ~CScriptedRecordset() override { --m_script.liveObjects; }

    void PutCursorLocation(LONG location) override {
        m_script.Do(Op::PutCursorLocation);
        m_script.cursorLocation = location;
    }
    void Open(const Platform::VARIANT& source, const Platform::VARIANT& connection, LONG cursor, LONG lock,
              LONG options) override {
        m_script.Do(Op::RecordsetOpen);
        if (connection.vt != Platform::VT_DISPATCH || cursor != 0 || lock != 1 || options != 1)
            throw Platform::_com_error(Platform::E_INVALIDARG);
        m_script.statement = Platform::BstrView(source.bstrVal);
        m_pTable = &m_script.table;
        Load();
    }
    std::int64_t GetRecordCount() override {
        m_script.Do(Op::GetRecordCount);
        const auto rows = static_cast<std::int64_t>(Opened().rows.size());
        return m_script.recordCount == -2 ? rows : m_script.recordCount;
    }
    Platform::Fields* GetFields() override {
        m_script.Do(Op::GetFields);
        Opened();
        return m_script.hasFields ? this : nullptr;
    }
    bool GetEOF() override {
        m_script.Do(Op::GetEOF);
        return m_row == Opened().rows.size();
    }
    void MoveNext() override {
        m_script.Do(Op::MoveNext);
        ++m_row;
        Load();
    }
    void Close() override {
        m_script.Do(Op::RecordsetClose);
        Opened();
        m_pTable = nullptr;
    }

private:
    const Table& Opened() const {
        if (m_pTable == nullptr)
            throw Platform::_com_error(Platform::adErrObjectClosed);
        return *m_pTable;
    }
    /// Makes the row's values beforehand, so that reading them allocates nothing.
    void Load() {
        if (m_pTable == nullptr || m_row == m_pTable->rows.size())
            return;
        const auto& row = m_pTable->rows[m_row];
        if (m_values.size() != row.size())
            m_values = std::vector<Platform::CVariant>(row.size());
        for (std::size_t i = 0; i < row.size(); ++i) {
            Platform::VARIANT& value = *m_values[i].Get();
            const auto* text = std::get_if<std::u16string>(&row[i]);
            if (text != nullptr && value.vt == Platform::VT_BSTR)
                Platform::SysReAllocStringLen(&value.bstrVal, text->data(), static_cast<DWORD>(text->size()));
            else
                SetVariant(value, row[i]);
        }
    }
    LONG GetCount() override {
        m_script.Do(Op::GetCount);
        return static_cast<LONG>(Opened().columns.size());
    }
    Platform::Field* GetItem(const Platform::VARIANT& index) override {
        m_script.Do(Op::GetItem);
        const auto& columns = Opened().columns;
        for (m_column = 0; m_column < columns.size(); ++m_column) {
            if (index.vt == Platform::VT_I4 ? static_cast<std::size_t>(index.lVal) == m_column
                                            : Platform::BstrView(index.bstrVal) == columns[m_column])
                return m_script.hasField ? this : nullptr;
        }
        throw Platform::_com_error(Platform::adErrItemNotFound);
    }
    const Platform::VARIANT& GetValue() override {
        m_script.Do(Op::GetValue);
        return m_values.at(m_column).Value();
    }
    std::u16string_view GetName() override {
        m_script.Do(Op::GetName);
        return Opened().columns[m_column];
    }

    CScript& m_script;
    const Table* m_pTable;
    std::size_t m_row = 0;
    std::size_t m_column = 0;
    std::vector<Platform::CVariant> m_values;
};

class CScriptedConnection final : public Platform::CComObject<Platform::_Connection> {
public:
    explicit CScriptedConnection(CScript& script) : m_script(script) { ++script.liveObjects; }
    ~CScriptedConnection() override { --m_script.liveObjects; }

    void Open(Platform::BSTR connectionString, Platform::BSTR user, Platform::BSTR password, LONG options) override {
        m_script.Do(Op::ConnectionOpen);
        if (Platform::SysStringLen(user) != 0 || Platform::SysStringLen(password) != 0 || options != -1)
            throw Platform::_com_error(Platform::E_INVALIDARG);
        m_script.connectionString = Platform::BstrView(connectionString);
        m_bOpen = true;
    }
    Platform::CComPtr<Platform::_Recordset> OpenSchema(LONG schema) override {
        m_script.Do(Op::OpenSchema);
        if (schema != 20)
            throw Platform::_com_error(Platform::E_INVALIDARG);
        return Platform::MakeComObject<CScriptedRecordset>(m_script, &m_script.schema);
    }
    void Close() override {
        m_script.Do(Op::ConnectionClose);
        if (!m_bOpen)
            throw Platform::_com_error(Platform::adErrObjectClosed);
        m_bOpen = false;
    }

private:
    CScript& m_script;
    bool m_bOpen = false;
};

inline CScript::CScript()
    : m_connection(u"ADODB.Connection",
                   [this] {
                       return hasConnection ? Platform::CComPtr<Platform::IUnknown>(
                                                  Platform::MakeComObject<CScriptedConnection>(*this))
                                            : nullptr;
                   }),
      m_recordset(u"ADODB.Recordset", [this] {
          return hasRecordset
                     ? Platform::CComPtr<Platform::IUnknown>(Platform::MakeComObject<CScriptedRecordset>(*this))
                     : nullptr;
      }) {
    SetSchema({{u"Sheet1$", u"TABLE"}});
}

/// The HRESULT that `run` raises as _com_error, or 0.
template <class TRun>
Platform::HRESULT Raised(TRun run) {
    try {
        run();
        return 0;
    } catch (const Platform::_com_error& error) {
        return error.Error();
    }
}

} // namespace NSTQ::Tests
