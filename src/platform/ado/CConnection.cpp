#include "platform/ado/CConnection.h"

#include "platform/ado/CRecordset.h"
#include "platform/ado/ConnectionString.h"
#include "platform/ado/DataSource.h"
#include "platform/automation/WipeMemory.h"

#include <array>

namespace NSTQ::Platform {

namespace {

/// The table schema as rows of two columns.
class CSchemaRows final : public IRowSource {
public:
    explicit CSchemaRows(std::vector<STableSchema> tables) : m_tables(std::move(tables)) {}

    const std::vector<std::u16string>& GetColumnNames() const override { return m_names; }
    const std::vector<SFieldType>& GetColumnTypes() const override { return m_types; }
    std::int64_t GetRowCount() const override { return static_cast<std::int64_t>(m_tables.size()); }
    bool MoveNext() override {
        if (m_next == m_tables.size())
            return false;
        const STableSchema& table = m_tables[m_next++];
        SetText(m_values[0], table.name);
        SetText(m_values[1], table.type);
        return true;
    }
    const VARIANT& GetValue(std::size_t column) override { return m_values.at(column).Value(); }

private:
    static void SetText(CVariant& value, std::u16string_view text) {
        const BSTR copy = SysAllocStringLen(text.data(), static_cast<DWORD>(text.size()));
        if (copy == nullptr)
            throw _com_error(E_OUTOFMEMORY);
        VariantClear(value.Get());
        value.Get()->vt = VT_BSTR;
        value.Get()->bstrVal = copy;
    }

    const std::vector<std::u16string> m_names = {u"TABLE_NAME", u"TABLE_TYPE"};
    const std::vector<SFieldType> m_types{m_names.size()};
    std::vector<STableSchema> m_tables;
    std::size_t m_next = 0;
    std::array<CVariant, 2> m_values;
};

} // namespace

void CConnection::Open(BSTR connectionString, BSTR userId, BSTR password, LONG options) {
    if (m_source)
        throw _com_error(adErrObjectOpen, "the connection is open already");
    if (SysStringLen(userId) != 0 || SysStringLen(password) != 0 || options != adConnectUnspecified)
        throw _com_error(adErrInvalidArgument, "a connection takes only a connection string");
    std::string text = AnsiFromWide(BstrView(connectionString));
    const CWipedMemory wipedText(text.data(), text.size());
    SConnectionString parsed = ParseConnectionString(text);
    const CWipedMemory wipedPassWord(parsed.passWord.data(), parsed.passWord.size());
    parsed.readsAhead = parsed.readsAhead || m_readsAhead;
    m_source = OpenDataSource(parsed);
}

CComPtr<_Recordset> CConnection::OpenSchema(LONG schema) {
    IDataSource& source = GetSource();
    if (schema != adSchemaTables)
        throw _com_error(adErrInvalidArgument, "only the table schema is available");
    auto recordset = MakeComObject<CRecordset>();
    recordset->OpenRows(std::make_unique<CSchemaRows>(source.ListTables()));
    return recordset;
}

void CConnection::Close() {
    GetSource();
    m_source.reset();
}

IDataSource& CConnection::GetSource() const {
    if (!m_source)
        throw _com_error(adErrObjectClosed, "the connection is not open");
    return *m_source;
}

} // namespace NSTQ::Platform
