// What stands behind the ADO layer: a provider opens a workbook or database and gives its tables and their rows.
//
// Every failure is raised as _com_error with an HRESULT and a description that says what and where:
//   E_FAIL                 file missing or unreadable, not a workbook or database, damaged, or an encrypted workbook
//                          without its password
//   DB_SEC_E_AUTH_FAILED   wrong or missing password of a database
//   DB_E_NOTABLE           no such sheet or table
// Sources are opened by one thread and stay with it.
#pragma once

#include "platform/automation/Variant.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Platform {

/// One row of the table schema.
struct STableSchema {
    std::u16string strName; ///< as it stands in a statement between '[' and ']'
    std::u16string strType; ///< "TABLE", "VIEW", "SYSTEM TABLE", ...
};

/// The rows of one sheet or table, read forward once. It keeps what it needs of its data source alive.
class IRowSource {
public:
    virtual ~IRowSource() = default;
    /// The number of columns is theirs; both stay the same as long as the object lives.
    virtual const std::vector<std::u16string>& GetColumnNames() const = 0;
    /// Known from the start.
    virtual std::int64_t GetRowCount() const = 0;
    /// Steps to the next row (the first, when called first). False past the last row.
    virtual bool MoveNext() = 0;
    /// True when the current row is known to have no value, so that none needs to be asked for; false says nothing.
    virtual bool IsNullRow() const { return false; }
    /// A value of the current row, computed when it is asked for. It and its text stay the row source's and valid
    /// until the next call of this or MoveNext, so that a row of long texts takes the memory of one. A text may be
    /// cut where it is longer than any field that a reader hands out.
    virtual const VARIANT& GetValue(std::size_t column) = 0;
};

/// An open workbook or database.
class IDataSource {
public:
    virtual ~IDataSource() = default;
    /// Sheets in workbook order, then defined names; tables in name order.
    virtual std::vector<STableSchema> ListTables() = 0;
    /// Opens a table by a listed name.
    virtual std::unique_ptr<IRowSource> OpenTable(std::u16string_view name) = 0;
};

/// What a connection string tells a provider. Texts are in the ANSI code page.
struct SSourceOptions {
    std::string strPath;
    std::string strPassWord;
    bool bHeaderRow = false; ///< HDR=YES: the first row names the columns (workbooks)
    bool bWorkbook = true;   ///< expected is a workbook, else a database
};

/// Opens the file as what it is. This layer only declares it; src/providers defines it. Raises what is listed above,
/// E_FAIL also for a file that is not the kind that was expected, and adErrProviderNotFound for one that this build
/// does not read.
std::unique_ptr<IDataSource> OpenSource(const SSourceOptions& options);

/// Wipes what was computed from passwords and is kept so that the same source opens faster the next time. Any thread
/// may call it at any time. src/providers defines it.
void ForgetPassWords() noexcept;

} // namespace NSTQ::Platform
