// Writes rows to a SQLite database: each input, or each sheet or table of it, is a table with the names of its
// columns.
//
// The database replaces the target only when everything is written. Its columns are declared by the types of the
// source: INTEGER (booleans are 0 and 1), REAL, NUMERIC (numbers of sheets; decimals and currency), BLOB, TEXT. Dates
// are TEXT as ISO 8601 writes them, with a space before the time, as SQLite's functions expect: 2024-05-06 07:08:09.
// Columns of text files are TEXT, as are columns of sheets whose cells differ. A decimal number of more digits than
// SQLite's numbers keep makes its column TEXT: the table is then written again. A field that a short row of text
// lacks is NULL; a row with more fields than there are columns adds columns named F5 and so on by their position.
#pragma once

#include "COutputTarget.h"
#include "CUniqueNames.h"
#include "ITypedOutput.h"
#include "SOptions.h"

#include <array>
#include <cstddef>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace NSTQ::Tool {

class CSqliteOutput final : public ITypedOutput {
public:
    /// Begins a database beside the target `name`. Throws CFailure, also for a target that is no file.
    CSqliteOutput(const SOptions& options, const std::string& name);
    /// Removes an incomplete database.
    ~CSqliteOutput() override;
    CSqliteOutput(const CSqliteOutput&) = delete;
    CSqliteOutput& operator=(const CSqliteOutput&) = delete;

    void BeginTable(const std::string& input, const std::string& table) override;
    bool EndTable() override;
    bool WriteNames(const char* const* names, const WORD* lengths, DWORD count) override;
    void SetColumns(const std::vector<CLibraryRows::SColumn>& columns, bool isNamed) override;
    bool WriteRow(const char* const* fields, const WORD* lengths, DWORD count) override;
    bool WriteValues(std::span<const tqc_value> values, std::string& loss) override;
    std::string TakeNote() override;
    void Close() override;
    void Replace() override { m_target.Replace(); }
    bool IsStandardOutput() const override { return false; }

private:
    /// How the values of a column are stored.
    enum class EStore : unsigned char { Own, Integer, Real, Numeric, Text, Blob };
    struct SColumn {
        std::string name;
        EStore store;
        std::array<char, 32> text; ///< of a date or number, while it is bound
        std::string bytes;         ///< the same of a date in a form of its own, or of bytes as text
    };
    struct SClose {
        void operator()(sqlite3* database) const;
        void operator()(sqlite3_stmt* statement) const;
    };

    EStore StoreOf(int type) const;
    void AddColumn(std::string_view name, EStore store);
    void CreateTable();
    void AddMissingColumns(std::size_t count);
    void Prepare();
    std::string NameTable(const std::string& input, const std::string& table);
    void Run(const std::string& statement);
    void Step();
    void Check(int code);
    [[noreturn]] void Fail();
    int Bind(int at, SColumn& column, const tqc_value& value, bool& isKept);
    int BindNumber(int at, SColumn& column, const tqc_value& value, bool& isKept);
    int BindDecimal(int at, SColumn& column, std::string_view text);
    int BindDate(int at, SColumn& column, const tqc_value& value);
    int BindBytes(int at, SColumn& column, std::string_view bytes);
    int BindText(int at, std::string_view text);

    const SOptions& m_options;
    COutputTarget m_target;
    std::unique_ptr<sqlite3, SClose> m_database;
    std::unique_ptr<sqlite3_stmt, SClose> m_insert; ///< none before the columns of the table are known
    std::set<std::string> m_tables;                 ///< in small letters
    std::string m_table;                            ///< in quotes
    CUniqueNames m_names{true};
    std::vector<SColumn> m_columns;
    std::set<std::size_t> m_longDecimals; ///< the columns that have to be TEXT
    bool m_isAgain = false;               ///< the table has to be written again for them
    std::string m_note;
};

} // namespace NSTQ::Tool
