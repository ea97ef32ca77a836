// What goes into a provider from memory, and what comes out of its rows, as text.
#pragma once

#include "platform/ado/Provider.h"
#include "providers/common/ByteSources.h"
#include "providers/common/CSourceError.h"
#include "providers/common/TextConversion.h"
#include "support/CPlainTextCheck.h"

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

namespace NSTQ::Tests {

/// Bytes in memory as the file of a provider.
class CMemoryAccess : public Providers::IRandomAccess {
public:
    explicit CMemoryAccess(std::string bytes) : m_strBytes(std::move(bytes)) {}
    std::uint64_t Size() const override { return m_strBytes.size(); }
    void ReadAt(std::uint64_t offset, std::span<unsigned char> target) override {
        if (offset > m_strBytes.size() || target.size() > m_strBytes.size() - offset)
            throw Providers::CSourceError("past the end");
        std::copy_n(m_strBytes.begin() + static_cast<std::ptrdiff_t>(offset), target.size(), target.begin());
    }

private:
    std::string m_strBytes;
};

/// A value as text: '-' for none, texts in quotes, dates behind a 'd'.
inline std::string ValueText(const Platform::VARIANT& value) {
    using namespace Platform;
    char number[40];
    switch (value.vt) {
    case VT_NULL:
        return "-";
    case VT_BSTR: {
        std::string text = "'";
        for (const char16_t unit : BstrView(value.bstrVal)) {
            unsigned char bytes[4];
            text.append(reinterpret_cast<char*>(bytes), Providers::EncodeUtf8(unit, bytes));
        }
        return text + "'";
    }
    case VT_BOOL:
        return value.boolVal == VARIANT_TRUE ? "true" : value.boolVal == VARIANT_FALSE ? "false" : "bad";
    case VT_R8:
        std::snprintf(number, sizeof number, "%.15g", value.dblVal);
        return number;
    case VT_DATE:
        std::snprintf(number, sizeof number, "d%.10g", value.date);
        return number;
    default:
        return "type " + std::to_string(value.vt);
    }
}

/// The type of a column in which every value is of this kind.
inline EDataType TypeOf(Platform::VARTYPE kind) {
    switch (kind) {
    case Platform::VT_R8:
        return EDataType::adDouble;
    case Platform::VT_DATE:
        return EDataType::adDate;
    case Platform::VT_BOOL:
        return EDataType::adBoolean;
    default:
        return EDataType::adVarWChar;
    }
}

/// Rows end with ';', cells are separated by blanks. Every other value is asked for twice. The columns have the types
/// that their values share.
inline std::string RowsText(Platform::IRowSource& rows) {
    std::string text;
    std::int64_t count = 0;
    std::vector<EDataType> types(rows.GetColumnNames().size());
    CPlainTextCheck plainTexts;
    for (; rows.MoveNext(); ++count) {
        text += plainTexts.CheckRow(rows);
        for (std::size_t i = 0; i < rows.GetColumnNames().size(); ++i) {
            if (i % 2 == 1)
                rows.GetValue(i);
            text += (i == 0 ? "" : " ") + ValueText(rows.GetValue(i));
            if (const auto kind = rows.GetExactValue(i).value.vt; kind != Platform::VT_NULL)
                types[i] =
                    types[i] == EDataType::adEmpty || types[i] == TypeOf(kind) ? TypeOf(kind) : EDataType::adVarWChar;
        }
        text += ';';
    }
    for (std::size_t i = 0; i < types.size(); ++i)
        if (rows.GetColumnTypes()[i].type != (types[i] == EDataType::adEmpty ? EDataType::adVarWChar : types[i]))
            text += " but column " + std::to_string(i) + " has another type";
    return count == rows.GetRowCount() ? text : text + " but " + std::to_string(rows.GetRowCount()) + " rows claimed";
}

/// The names of the tables, each with a '|' behind it.
inline std::u16string ListText(Platform::IDataSource& source) {
    std::u16string listing;
    for (const Platform::STableSchema& table : source.ListTables())
        listing += table.name + u"|";
    return listing;
}

} // namespace NSTQ::Tests
