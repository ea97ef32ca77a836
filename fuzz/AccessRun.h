// Lists a database and reads all of its tables.
#pragma once

#include "FuzzSupport.h"
#include "providers/access/Access.h"
#include "support/RowsText.h"

#include <algorithm>

namespace NSTQ::Fuzz {

/// Calls `work`; the library may reject what it reads, with one of the documented codes.
template <class TWork>
void AttemptAccess(TWork work) {
    try {
        work();
    } catch (const Platform::_com_error& error) {
        Require(error.Error() == Platform::E_FAIL || error.Error() == Platform::DB_E_NOTABLE ||
                    error.Error() == Platform::DB_SEC_E_AUTH_FAILED,
                "a failure has its documented code");
    }
}

/// Reads rows and returns their number. A forged table may have more rows than the file has bytes, so not all are
/// read.
inline int ReadTable(Platform::IRowSource& rows) {
    constexpr int rowsRead = 20'000;
    constexpr std::size_t columnsRead = 50;
    const std::size_t columns = std::min(rows.GetColumnNames().size(), columnsRead);
    int count = 0;
    Tests::CPlainTextCheck plainTexts;
    for (; count < rowsRead && rows.MoveNext(); ++count) {
        Require(plainTexts.CheckRow(rows, columnsRead).empty(), "plain texts are those of the plain way");
        for (std::size_t column = 0; column < columns; ++column) {
            const Platform::VARIANT& value = rows.GetValue(column);
            Platform::CVariant text;
            Require(value.vt == Platform::VT_NULL ||
                        Platform::VariantChangeType(text.Get(), &value, 0, Platform::VT_BSTR) == Platform::S_OK,
                    "each value has a text");
        }
    }
    return count;
}

/// Calls `read` with each table and its name.
template <class TRead>
void ReadDatabase(std::string bytes, TRead read) {
    AttemptAccess([&] {
        const auto source =
            Providers::OpenAccess(Providers::CSourceInput(std::make_shared<Tests::CMemoryAccess>(std::move(bytes))),
                                  {.path = "fuzz", .passWord = "password"});
        for (const Platform::STableSchema& table : source->ListTables())
            AttemptAccess([&] { read(table.name, *source->OpenTable(table.name)); });
    });
}

} // namespace NSTQ::Fuzz
