// The layer below ADO: a provider opens a workbook or database and returns its tables and their rows.
//
// Every failure is thrown as _com_error with an HRESULT and a description that says what and where:
//   E_FAIL                 file missing or unreadable, not a workbook or database, damaged, or an encrypted workbook
//                          without its password
//   DB_SEC_E_AUTH_FAILED   wrong or missing password of a database
//   DB_E_NOTABLE           no such sheet or table
// A source is used only by the thread that opened it.
#pragma once

#include "platform/automation/Variant.h"
#include "tqcAccess/DataType.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Platform {

/// One row of the table schema.
struct STableSchema {
    std::u16string name; ///< as it stands in a statement between '[' and ']'
    std::u16string type; ///< "TABLE", "VIEW", "SYSTEM TABLE", ...
};

/// The rows of one sheet or table, read forward once. It keeps the parts of its data source alive that it needs.
class IRowSource {
public:
    virtual ~IRowSource() = default;
    /// One name for each column; they do not change.
    virtual const std::vector<std::u16string>& GetColumnNames() const = 0;
    /// One type for each column, from the definition of a table or from all cells of a sheet, known before the first
    /// row is read; see tqcAccess/DataType.h. They do not change.
    virtual const std::vector<SFieldType>& GetColumnTypes() const = 0;
    /// Known before the first row is read.
    virtual std::int64_t GetRowCount() const = 0;
    /// Steps to the next row (the first, when called first). False past the last row.
    virtual bool MoveNext() = 0;
    /// True when the current row is known to have no value, so that GetValue need not be called; false means unknown.
    virtual bool IsNullRow() const { return false; }
    /// A value of the current row, computed by this call. It and its text belong to the row source and are valid
    /// until the next call of this or MoveNext, so that a row of long texts takes the memory of one. A text may be
    /// truncated if it is longer than any field that a reader returns, and bytes are a text of digits.
    virtual const VARIANT& GetValue(std::size_t column) = 0;
    /// The texts of values of the current row that need no conversion, for a reader that wants nothing but texts: one
    /// element of `texts` for each column. A text is in the ANSI code page and exactly what the conversion of
    /// GetValue under the user locale gives; it has no space at its beginning or end and no control character, but
    /// for CR and LF if the reader `keepsLineEnds`. The data of the view are null where there is none: such a value
    /// is missing, has to be converted, or cannot be read, which only GetValue reports. The texts belong to the row
    /// source and are valid until the next call of this or MoveNext.
    virtual void GetPlainTexts(std::span<std::string_view> texts, bool /*keepsLineEnds*/) {
        std::ranges::fill(texts, std::string_view());
    }
    /// The value of GetValue without loss: texts are whole, bytes are bytes. It takes the memory of the value, which
    /// is at most 2^30 bytes in a database and 2^22 in a workbook; DB_E_DATAOVERFLOW for a text that cannot be
    /// returned as a whole. Valid as the result of GetValue.
    virtual SExactValue GetExactValue(std::size_t column) { return {GetValue(column), {}}; }
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

/// The options for a provider from a connection string. Texts are in the ANSI code page.
struct SSourceOptions {
    std::string path;
    std::string passWord;
    bool hasHeaderRow = false; ///< HDR=YES: the first row names the columns (workbooks)
    bool isWorkbook = true;    ///< a workbook is expected, else a database
    /// The rows of a workbook with compressed parts may be read ahead by a thread of their own, which ends with them.
    bool readsAhead = false;
};

/// Opens the file by its real format. This layer only declares it; src/providers defines it. Throws what is listed
/// above, E_FAIL also for a file of another type than expected, and adErrProviderNotFound for one that this build
/// does not read.
std::unique_ptr<IDataSource> OpenSource(const SSourceOptions& options);

/// Wipes what was computed from passwords and is kept so that the same source opens faster the next time. Any thread
/// may call it at any time. src/providers defines it.
void ForgetPassWords() noexcept;

} // namespace NSTQ::Platform
