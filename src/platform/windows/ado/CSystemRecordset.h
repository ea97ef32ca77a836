// CSystemRecordset: a record set of the system's ADO with its fields.
//
// The object of the system is made by Open. Each field keeps its value until the next row, so a value is asked of the
// system once per row, and its text takes the memory of the longest one so far.
#pragma once

#include "platform/windows/ado/CSystemConnection.h"

#include <deque>
#include <optional>
#include <string>

namespace NSTQ::Platform {

class CSystemRecordset final : public CComObject<_Recordset> {
public:
    explicit CSystemRecordset(FMakeSystemObject make = &CDispatch::Create);

    void PutCursorLocation(LONG location) override;
    void Open(const VARIANT& source, const VARIANT& activeConnection, LONG cursorType, LONG lockType,
              LONG options) override;
    std::int64_t GetRecordCount() override;
    Fields* GetFields() override;
    bool GetEOF() override;
    void MoveNext() override;
    void Close() override;

    /// Takes over an open record set of the system.
    void Take(CDispatch object);

private:
    class CField final : public Field {
    public:
        CField(CSystemRecordset& owner, CDispatch object);

        const VARIANT& GetValue() override;
        std::u16string_view GetName() override { return m_name; }
        EDataType GetType() override { return GetFieldType().type; }
        std::uint8_t GetPrecision() override { return GetFieldType().precision; }
        std::uint8_t GetNumericScale() override { return GetFieldType().numericScale; }
        LONG GetDefinedSize() override { return static_cast<LONG>(GetFieldType().definedSize); }
        SExactValue GetExactValue() override;

    private:
        void Fetch();
        const SFieldType& GetFieldType();

        CSystemRecordset& m_owner;
        CDispatch m_object;
        std::u16string m_name;
        std::optional<SFieldType> m_type;
        std::uint64_t m_row = 0;    ///< whose value it has; 0 for none
        CSystemVariant m_fetched;   ///< bytes of that row, else empty
        bool m_isConverted = false; ///< whether m_value is of that row
        VARIANT m_value;            ///< its text is m_text
        CBstr m_text;
    };

    class CFields final : public Fields {
    public:
        LONG GetCount() override { return static_cast<LONG>(m_fields.size()); }
        Field* GetItem(const VARIANT& index) override;

        std::deque<CField> m_fields;
    };

    /// The members of all fields.
    struct SFieldMembers {
        CMember name{L"Name"};
        CMember value{L"Value"};
        CMember type{L"Type"};
        CMember precision{L"Precision"};
        CMember numericScale{L"NumericScale"};
        CMember definedSize{L"DefinedSize"};
    };

    void RequireClosed() const;
    void RequireOpen() const;
    void RequirePosition() const;
    void RequireRow() const;

    const CSystemApartment m_apartment; ///< destroyed after the objects
    FMakeSystemObject m_make;
    LONG m_cursorLocation = adUseServer;
    CDispatch m_object; ///< null while closed
    CMember m_eofMember{L"EOF"};
    CMember m_moveNextMember{L"MoveNext"};
    SFieldMembers m_fieldMembers;
    CFields m_fields;
    std::uint64_t m_row = 1;
    bool m_isEof = false;
    std::optional<_com_error> m_lost; ///< why the position was lost
};

} // namespace NSTQ::Platform
