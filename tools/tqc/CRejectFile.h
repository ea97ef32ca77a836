// The rows that were left out, as CSV with a header row: row, offset, cause, record and file; where several sheets or
// tables may be selected, also table.
//
// `row` counts the rows of the source from 1. `offset` is the position of the row's first byte in text, counted from
// 0; in a package it counts in the data file; workbooks and databases have none. `record` contains the
// unchanged bytes of the row, without its line end; for workbooks and databases the fields as a CSV row in UTF-8.
// Lines end with CR LF. With --formula-guard it contains apostrophes as well.
#pragma once

#include "CFormulaGuard.h"
#include "COpenFile.h"
#include "COutputTarget.h"
#include "CTextFile.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace NSTQ::Tool {

class CRejectFile {
public:
    /// Opens the target `name`. `isGuarded` guards what comes from the source; `namesTables` adds the column "table".
    /// Throws CFailure.
    CRejectFile(const std::string& name, bool isGuarded, bool namesTables);

    /// The input that the next rows come from, and its sheet or table. `text` is null when they come from a workbook
    /// or database. Throws CFailure.
    void SetSource(const std::string& file, const std::string& table, const CTextFile* text);

    /// A row of text: `size` bytes from `offset` on. Throws CFailure.
    void AddText(std::uint64_t row, LONGLONG offset, LONGLONG size, std::string_view cause);
    /// A row of a workbook or database. Throws CFailure.
    void AddFields(std::uint64_t row, const char* const* fields, const WORD* lengths, DWORD count,
                   std::string_view cause);

    /// Writes the buffer and replaces the target by the file, which may grow further. Throws CFailure.
    void Place();

private:
    void AddQuoted(std::string_view text);
    void AddGuarded(std::string_view text, bool& isAtStart);
    void AddDoubled(std::string_view text);
    void CopyRecord(LONGLONG offset, LONGLONG size);
    std::string_view ReadAt(LONGLONG offset, LONGLONG size);
    void EndRow();
    void Flush();

    COutputTarget m_target;
    CFormulaGuard m_guard{','};
    bool m_isGuarded;
    bool m_namesTables;
    std::string m_guarded;
    std::string m_buffer;
    std::string m_file;
    std::string m_table;
    std::string m_lineEnd;
    std::string m_piece; ///< of a record that is copied
    COpenFile m_source;  ///< of text: the file that the rows are read from again
};

} // namespace NSTQ::Tool
