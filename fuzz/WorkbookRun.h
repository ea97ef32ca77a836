// Lists a workbook and reads all of its sheets.
#pragma once

#include "FuzzSupport.h"
#include "support/RowsText.h"

#include <algorithm>

namespace NSTQ::Fuzz {

inline void ReadValue(Platform::IRowSource& rows, std::size_t column) {
    const Platform::VARIANT& value = rows.GetValue(column);
    const EDataType type = rows.GetColumnTypes()[column].type;
    Tests::ValueText(value);
    Require(value.vt == Platform::VT_NULL || type == EDataType::adVarWChar || type == Tests::TypeOf(value.vt),
            "a value has the type of its column");
}

inline void ReadRows(Platform::IRowSource& rows) {
    // A forged sheet of a few bytes may have the maximum number of rows.
    constexpr std::int64_t rowsRead = 20'000;
    constexpr std::size_t columnsRead = 50;
    std::int64_t count = 0;
    Tests::CPlainTextCheck plainTexts;
    while (count < rowsRead && rows.MoveNext()) {
        ++count;
        Require(plainTexts.CheckRow(rows, columnsRead).empty(), "plain texts are those of the plain way");
        for (std::size_t i = 0; i < std::min(rows.GetColumnNames().size(), columnsRead); ++i)
            ReadValue(rows, i);
    }
    Require(count == std::min(rows.GetRowCount(), rowsRead), "there are as many rows as claimed");
}

/// `open` returns the data source. The workbook or a sheet may be rejected; a sheet that is read must return as many
/// rows as it states. The other sheets are read even if one is rejected.
template <class TOpen>
void ReadWorkbook(TOpen open) {
    const auto attempt = [](auto work) {
        try {
            work();
        } catch (const Platform::_com_error& error) {
            Require(error.Error() == Platform::E_FAIL || error.Error() == Platform::DB_E_NOTABLE,
                    "a failure has its documented code");
        }
    };
    attempt([&] {
        const auto book = open();
        for (const auto& table : book->ListTables())
            attempt([&] { ReadRows(*book->OpenTable(table.name)); });
    });
}

} // namespace NSTQ::Fuzz
