// Databases of the writer in memory, and their tables as UTF-8 text.
#pragma once

#include "providers/access/Access.h"
#include "providers/common/TextConversion.h"
#include "support/AccessWriter.h"
#include "support/RowsText.h"
#include "tqcAccess/ComError.h"

#include <gtest/gtest.h>

namespace NSTQ::Tests {

inline constexpr EJet allVersions[] = {EJet::Jet3,  EJet::Jet4,  EJet::Ace12, EJet::Ace14,
                                       EJet::Ace15, EJet::Ace16, EJet::Ace17};

/// The constructor throws what opening a database throws.
class CAccessFile {
public:
    explicit CAccessFile(const std::string& bytes, const std::string& passWord = {})
        : m_source(Providers::OpenAccess(Providers::CSourceInput(std::make_shared<CMemoryAccess>(bytes)),
                                         {"data.mdb", passWord})) {}

    /// The tables and queries that a program offers, with '|' between them.
    std::string Names() const {
        std::string names;
        for (const Platform::STableSchema& table : m_source->ListTables())
            if (table.type == u"TABLE" || table.type == u"VIEW")
                names += (names.empty() ? "" : "|") + Utf8(table.name);
        return names;
    }
    std::unique_ptr<Platform::IRowSource> Open(const std::string& table) const {
        return m_source->OpenTable(Providers::ToUtf16(table));
    }
    /// A line for each row, with '|' between the fields; where a call fails, "raised " and the description. The exact
    /// values have the same texts.
    std::string Rows(const std::string& table, bool hasHeaderRow = false) const {
        std::string text;
        try {
            const auto rows = Open(table);
            const auto& names = rows->GetColumnNames();
            for (std::size_t i = 0; hasHeaderRow && i < names.size(); ++i)
                text += Utf8(names[i]) + (i + 1 < names.size() ? '|' : '\n');
            for (CPlainTextCheck plainTexts; rows->MoveNext();) {
                EXPECT_EQ(plainTexts.CheckRow(*rows), "");
                for (std::size_t i = 0; i < names.size(); ++i) {
                    const std::string field = FieldText(rows->GetValue(i));
                    EXPECT_EQ(ExactText(rows->GetExactValue(i)), field);
                    ExpectType(rows->GetColumnTypes().at(i).type, rows->GetValue(i).vt);
                    text += field + (i + 1 < names.size() ? '|' : '\n');
                }
            }
        } catch (const Platform::_com_error& error) {
            EXPECT_TRUE(error.Error() == Platform::E_FAIL || error.Error() == Platform::DB_E_NOTABLE);
            text += std::string("raised ") + error.Description();
        }
        return text;
    }

private:
    static std::string Utf8(std::u16string_view text) {
        std::string bytes;
        return std::string(Providers::ToUtf8(text, bytes));
    }
    /// The kinds of values and the types of columns have the same numbers, except texts and bytes.
    static void ExpectType(EDataType type, Platform::VARTYPE kind) {
        if (kind == Platform::VT_NULL || (type == EDataType::adDate && kind == Platform::VT_R8))
            return;
        if (kind == Platform::VT_BSTR)
            EXPECT_TRUE(type == EDataType::adGUID || type >= EDataType::adBinary) << int(type);
        else
            EXPECT_EQ(type, kind == Platform::VT_DECIMAL && type == EDataType::adNumeric ? type : EDataType{kind});
    }
    static std::string ExactText(const Platform::SExactValue& exact) {
        if (exact.value.vt != (Platform::VT_ARRAY | Platform::VT_UI1))
            return FieldText(exact.value);
        std::string text = "0x";
        for (const unsigned char byte : exact.bytes)
            text += {"0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
        return text;
    }
    static std::string FieldText(const Platform::VARIANT& value) {
        Platform::CVariant text;
        if (value.vt == Platform::VT_NULL)
            return "";
        EXPECT_EQ(Platform::VariantChangeType(text.Get(), &value, 0, Platform::VT_BSTR), Platform::S_OK);
        return Utf8(Platform::BstrView(text.Value().bstrVal));
    }

    std::unique_ptr<Platform::IDataSource> m_source;
};

inline std::string RowsOf(CAccessWriter& writer, const std::string& table = "T") {
    return CAccessFile(writer.Finish().Bytes()).Rows(table);
}

} // namespace NSTQ::Tests
