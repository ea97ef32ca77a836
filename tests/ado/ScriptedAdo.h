// ADO objects that do what a script says: hand out given rows, fail where told, count their calls.
//
// One script is in force at a time; while it lives, its objects stand behind the two ProgIDs.
#pragma once

#include "platform/ado/Ado.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace NSTQ::Tests {

struct Null {};
struct Date {
    double days;
};
struct ErrorValue {};
/// What a cell holds: nothing, a text, a number, a truth value, a date, or an error value.
class Cell {
public:
    Cell(Null) : Cell(Platform::VT_NULL) {}
    Cell(ErrorValue) : Cell(Platform::VT_ERROR) { Value().scode = Platform::E_FAIL; }
    Cell(double number) : Cell(Platform::VT_R8) { Value().dblVal = number; }
    Cell(Date date) : Cell(Platform::VT_DATE) { Value().date = date.days; }
    Cell(bool truth) : Cell(Platform::VT_BOOL) {
        Value().boolVal = truth ? Platform::VARIANT_TRUE : Platform::VARIANT_FALSE;
    }
    Cell(const std::u16string& text) : Cell(Platform::VT_BSTR) {
        Value().bstrVal = Platform::SysAllocStringLen(text.data(), static_cast<DWORD>(text.size()));
    }
    Cell(const char16_t* text) : Cell(std::u16string(text)) {}
    Platform::VARIANT& Value() const { return *m_pValue->Get(); }

private:
    explicit Cell(Platform::VARTYPE type) { Value().vt = type; }

    std::shared_ptr<Platform::CVariant> m_pValue = std::make_shared<Platform::CVariant>();
};

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
    void SetTables(const std::vector<std::u16string>& names) {
        SetSchema({});
        for (const auto& name : names)
            schema.rows.push_back({name, u"TABLE"});
    }
    /// The nth call of `op`, such as "GetEOF" or "ConnectionOpen", from now on fails with `hr`.
    void FailAt(std::string_view op, Platform::HRESULT hr, int nth = 1) {
        failing = op;
        failure = hr;
        failAt = calls[op] + nth;
    }
    void Do(std::string_view op) {
        if (++calls[op] == failAt && op == failing)
            throw Platform::_com_error(failure, "scripted");
    }

    std::map<std::string_view, int> calls;
    Table table{{u"ID", u"Name"}, {}};
    Table schema;
    std::int64_t recordCount = -2; ///< -2: the number of rows
    std::string_view missing;      ///< "Connection", "Recordset", "Fields" or "Field": there is none to be had
    int liveObjects = 0;
    std::u16string connectionString;
    std::u16string statement;
    LONG cursorLocation = 0;

private:
    template <class T>
    Platform::CComPtr<Platform::IUnknown> Make(std::string_view name) {
        return name == missing ? nullptr : Platform::CComPtr<Platform::IUnknown>(Platform::MakeComObject<T>(*this));
    }

    std::string_view failing;
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
        ++script.liveObjects;
    }
    ~CScriptedRecordset() override { --m_script.liveObjects; }

    void PutCursorLocation(LONG location) override {
        m_script.Do("PutCursorLocation");
        m_script.cursorLocation = location;
    }
    void Open(const Platform::VARIANT& source, const Platform::VARIANT& connection, LONG cursor, LONG lock,
              LONG options) override {
        m_script.Do("RecordsetOpen");
        if (connection.vt != Platform::VT_DISPATCH || cursor != 0 || lock != 1 || options != 1)
            throw Platform::_com_error(Platform::E_INVALIDARG);
        m_script.statement = Platform::BstrView(source.bstrVal);
        m_pTable = &m_script.table;
    }
    std::int64_t GetRecordCount() override {
        m_script.Do("GetRecordCount");
        const auto rows = static_cast<std::int64_t>(Opened().rows.size());
        return m_script.recordCount == -2 ? rows : m_script.recordCount;
    }
    Platform::Fields* GetFields() override {
        m_script.Do("GetFields");
        Opened();
        return m_script.missing != "Fields" ? this : nullptr;
    }
    bool GetEOF() override {
        m_script.Do("GetEOF");
        return m_row == Opened().rows.size();
    }
    void MoveNext() override {
        m_script.Do("MoveNext");
        ++m_row;
    }
    void Close() override {
        m_script.Do("RecordsetClose");
        Opened();
        m_pTable = nullptr;
    }

private:
    const Table& Opened() const {
        if (m_pTable == nullptr)
            throw Platform::_com_error(Platform::adErrObjectClosed);
        return *m_pTable;
    }
    LONG GetCount() override {
        m_script.Do("GetCount");
        return static_cast<LONG>(Opened().columns.size());
    }
    Platform::Field* GetItem(const Platform::VARIANT& index) override {
        m_script.Do("GetItem");
        const auto& columns = Opened().columns;
        for (m_column = 0; m_column < columns.size(); ++m_column) {
            if (index.vt == Platform::VT_I4 ? static_cast<std::size_t>(index.lVal) == m_column
                                            : Platform::BstrView(index.bstrVal) == columns[m_column])
                return m_script.missing != "Field" ? this : nullptr;
        }
        throw Platform::_com_error(Platform::adErrItemNotFound);
    }
    const Platform::VARIANT& GetValue() override {
        m_script.Do("GetValue");
        return Opened().rows.at(m_row).at(m_column).Value();
    }
    std::u16string_view GetName() override {
        m_script.Do("GetName");
        return Opened().columns[m_column];
    }

    CScript& m_script;
    const Table* m_pTable;
    std::size_t m_row = 0;
    std::size_t m_column = 0;
};

class CScriptedConnection final : public Platform::CComObject<Platform::_Connection> {
public:
    explicit CScriptedConnection(CScript& script) : m_script(script) { ++script.liveObjects; }
    ~CScriptedConnection() override { --m_script.liveObjects; }

    void Open(Platform::BSTR connectionString, Platform::BSTR user, Platform::BSTR password, LONG options) override {
        m_script.Do("ConnectionOpen");
        if (Platform::SysStringLen(user) != 0 || Platform::SysStringLen(password) != 0 || options != -1)
            throw Platform::_com_error(Platform::E_INVALIDARG);
        m_script.connectionString = Platform::BstrView(connectionString);
        m_bOpen = true;
    }
    Platform::CComPtr<Platform::_Recordset> OpenSchema(LONG schema) override {
        m_script.Do("OpenSchema");
        if (schema != 20)
            throw Platform::_com_error(Platform::E_INVALIDARG);
        return Platform::MakeComObject<CScriptedRecordset>(m_script, &m_script.schema);
    }
    void Close() override {
        m_script.Do("ConnectionClose");
        if (!m_bOpen)
            throw Platform::_com_error(Platform::adErrObjectClosed);
        m_bOpen = false;
    }

private:
    CScript& m_script;
    bool m_bOpen = false;
};

inline CScript::CScript()
    : m_connection(u"ADODB.Connection", [this] { return Make<CScriptedConnection>("Connection"); }),
      m_recordset(u"ADODB.Recordset", [this] { return Make<CScriptedRecordset>("Recordset"); }) {
    SetTables({u"Sheet1$"});
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
