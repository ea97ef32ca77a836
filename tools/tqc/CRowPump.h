// Writes the rows of a source to the output and reports invalid ones.
//
// Row numbers count the rows of the source from 1, including those left out; of the lines before the header row each
// counts as one.
//
// An invalid row (it is too long, has too many fields or a field that is too long, or text after its last column)
// ends the conversion, is rejected, or is truncated and written, depending on the options. A character that the
// output encoding cannot represent is replaced and its row reported; with --strict it also makes the row invalid.
// Nothing is skipped without a message.
//
// A row above the line limit is left out: its reader stops inside it, so the rest is read and discarded. If the
// reader stopped inside quotes, reading continues after the current line: a missing closing quote, or a quote that is
// data, would otherwise extend the field to the end of the file.
#pragma once

#include "CColumnSelection.h"
#include "CColumns.h"
#include "CFormulaGuard.h"
#include "CRejectFile.h"
#include "CReporter.h"
#include "CRowEncoder.h"
#include "CSourceReader.h"
#include "CSparseRange.h"
#include "IRowOutput.h"
#include "SOptions.h"

#include <cstdint>
#include <string>
#include <vector>

namespace NSTQ::Tool {

/// The objects that all inputs of one output share.
struct SPumpTargets {
    IRowOutput& output;
    CRejectFile* rejects; ///< may be null
    CColumns& columns;
};

class CRowPump {
public:
    /// All must outlive the pump.
    CRowPump(const SOptions& options, ISourceReader& reader, const SPumpTargets& targets, CReporter& reporter);

    /// Called first: leaves out the lines before the header row and, with a header, writes the column names, which
    /// are in the first row unless `names` has them, in the ANSI code page, and which are not repeated if an earlier
    /// input had the same. Result as from Run.
    bool Begin(const std::vector<std::string>* names);
    /// Runs to the end of the source or the wanted number of rows, or until the output pipe is closed; then it
    /// returns false. Throws CFailure.
    bool Run();

private:
    bool WriteNames(const std::vector<std::string>& names);
    bool WriteFirstRowAsNames();
    void SkipLines();
    void SelectByNames(const std::vector<std::string>& names);
    void CheckReading(DWORD code) const;

    enum class EOutcome {
        Row,
        EofMark, ///< a row, or none, that a SUB ended before the end of the file
        TooLong,
        End
    };

    void ShowProgress();
    DWORD CopyPlainRows();
    EOutcome ReadRow();
    void ReadRecord();
    void SkipRestOfRow();
    bool IsWrittenAsRead(EOutcome outcome) const;
    bool WriteAsRead();
    bool TakeRow(EOutcome outcome);
    void AddTooLong();
    std::string DescribeOpenQuote() const;
    bool NoteMark();
    void PrepareRow();
    bool WriteRow();
    bool WriteFields();
    void RejectRow();
    void EncodeRow();
    void CheckStrictly(const std::string& loss) const;
    void CutLengths();
    std::string DescribeRow() const;
    void AddNote(const std::string& note);
    void AddFault(EExitStatus status, const std::string& what, const std::string& done, const std::string& hint);

    const SOptions& m_options;
    ISourceReader& m_reader;
    const bool m_countsBytes; ///< the reader does
    NSTQCore::IDataAccess& m_rows;
    CRowEncoder m_encoder;
    CFormulaGuard m_guard;
    CSparseRange m_sparse;
    CColumnSelection m_selection;
    const bool m_changesNone; ///< no option selects columns or changes fields
    SPumpTargets m_targets;
    CReporter& m_reporter;

    SRecord m_record; ///< the last one read
    const char** m_fields = nullptr;
    const WORD* m_lengths = nullptr;
    DWORD m_count = 0;
    LONGLONG m_openQuote = -1; ///< the position of a quote that is not closed in the row

    LONGLONG m_rowStart = 0;
    DWORD m_writeCount = 0; ///< the number of fields that are written

    std::uint64_t m_row = 0;        ///< the number of the current row
    std::uint64_t m_rowsBefore = 0; ///< the number of the row before the first one of data
    std::uint64_t m_written = 0;
    std::vector<char> m_text; ///< of rows that are copied; without room if none may be
    DWORD m_textSize = 0;
    std::uint64_t m_copyFrom = 0; ///< the row from which on copying is tried again
    std::uint64_t m_pause = 1;    ///< after how many
    std::vector<WORD> m_cutLengths;
    bool m_isHeader = false; ///< the current row is the header row
    std::string m_note;      ///< the message about the current row
    std::string m_faults;    ///< why it is invalid; empty if it is valid
};

} // namespace NSTQ::Tool
