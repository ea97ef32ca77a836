// CRecordset: the class of "ADODB.Recordset", which returns the rows of a provider.
#pragma once

#include "platform/ado/Ado.h"
#include "platform/ado/Provider.h"

#include <optional>
#include <vector>

namespace NSTQ::Platform {

class CRecordset final : public CComObject<_Recordset> {
public:
    CRecordset();

    void PutCursorLocation(LONG location) override;
    void Open(const VARIANT& source, const VARIANT& activeConnection, LONG cursorType, LONG lockType,
              LONG options) override;
    std::int64_t GetRecordCount() override;
    Fields* GetFields() override;
    bool GetEOF() override;
    void MoveNext() override;
    bool IsNullRow() override { return GetCurrentRow().IsNullRow(); }
    void GetPlainTexts(std::span<std::string_view> texts, bool keepsLineEnds) override {
        GetCurrentRow().GetPlainTexts(texts, keepsLineEnds);
    }
    void Close() override;

    /// Opens it on existing rows; the first one is then current.
    void OpenRows(std::unique_ptr<IRowSource> rows);

private:
    class CField final : public Field {
    public:
        CField(CRecordset& owner, std::size_t column) : m_owner(owner), m_column(column) {}
        const VARIANT& GetValue() override { return m_owner.GetCurrentRow().GetValue(m_column); }
        std::u16string_view GetName() override { return m_owner.GetRows().GetColumnNames()[m_column]; }
        EDataType GetType() override { return GetFieldType().type; }
        std::uint8_t GetPrecision() override { return GetFieldType().precision; }
        std::uint8_t GetNumericScale() override { return GetFieldType().numericScale; }
        LONG GetDefinedSize() override { return static_cast<LONG>(GetFieldType().definedSize); }
        SExactValue GetExactValue() override { return m_owner.GetCurrentRow().GetExactValue(m_column); }

    private:
        const SFieldType& GetFieldType() const { return m_owner.GetRows().GetColumnTypes()[m_column]; }

        CRecordset& m_owner;
        std::size_t m_column;
    };

    class CFields final : public Fields {
    public:
        LONG GetCount() override { return static_cast<LONG>(m_fields.size()); }
        Field* GetItem(const VARIANT& index) override;

        std::vector<CField> m_fields;
    };

    IRowSource& GetRows() const;
    IRowSource& GetCurrentRow() const;
    void RequireClosed() const;
    void RequirePosition() const;

    std::unique_ptr<IRowSource> m_rows; ///< null while closed
    CFields m_fields;
    bool m_isEof = false;
    std::optional<_com_error> m_lost; ///< why the position was lost
};

} // namespace NSTQ::Platform
