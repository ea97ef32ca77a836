// A workbook or database through the interface in C: its tables, and their rows with typed values.
#pragma once

#include "CInputFile.h"
#include "SOptions.h"
#include "tqcAccess.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace NSTQ::Tool {

/// The rows of one sheet or table, read forward once. They do not need their source, but its input.
class CLibraryRows {
public:
    struct SColumn {
        std::string name; ///< UTF-8
        int type;         ///< ADO's number, as in EDataType
    };

    /// The type of a column of which nothing is known: each value has its own.
    static constexpr int mixedType = 12;

    /// Takes the rows over.
    CLibraryRows(const CInputFile& input, tqc_rows* rows);

    const std::vector<SColumn>& Columns() const { return m_columns; }
    /// Without the header row.
    std::int64_t Count() const { return tqc_row_count(m_rows.get()); }
    /// How much has been read, in thousandths.
    int Position() const { return tqc_progress(m_rows.get()); }

    /// Steps to the next row. False past the last one. Throws CFailure.
    bool Next();
    /// The values of the row, valid until the next call of Next.
    std::span<const tqc_value> Values() const { return m_values; }

private:
    struct SClose {
        void operator()(tqc_rows* rows) const { tqc_close_rows(rows); }
    };

    const CInputFile& m_input;
    std::unique_ptr<tqc_rows, SClose> m_rows;
    std::vector<SColumn> m_columns;
    std::span<const tqc_value> m_values;
};

class CLibrarySource {
public:
    /// Opens the input; if it needs a password that the options do not give, asks for it when `mayAsk`. Without
    /// `hasHeader` the first row of a sheet is a row like any other, and its columns are named F1, F2, ... The
    /// options and the input must outlive it. Throws CFailure.
    CLibrarySource(const SOptions& options, const CInputFile& input, bool hasHeader, bool mayAsk = true);

    bool IsWorkbook() const;
    /// "sheet" or "table".
    std::string TableKind() const { return IsWorkbook() ? "sheet" : "table"; }
    /// The names of the sheets, or of the tables and views, in the order of the source.
    const std::vector<std::string>& TableNames() const { return m_names; }
    /// By its position among the names. Throws CFailure.
    CLibraryRows Open(std::size_t table) const;

private:
    struct SClose {
        void operator()(tqc_source* source) const { tqc_close_source(source); }
    };

    tqc_status TryToOpen(const std::optional<std::string>& password, bool hasHeader, tqc_error** error);

    const CInputFile& m_input;
    std::unique_ptr<tqc_source, SClose> m_source;
    std::vector<std::string> m_names;
};

} // namespace NSTQ::Tool
