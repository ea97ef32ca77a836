// Takes the rows of a source to the output and reports those that do not get there whole.
//
// Row numbers count the rows of the source from 1, those left out included.
//
// A row that cannot be taken whole (it is too long, or has too many fields or too long a field, or text behind its
// last column) ends the conversion, is rejected, or is written as far as possible, as the options say. A character
// that the output's encoding does not have is replaced and its row reported; when the options are strict it is such a
// fault, too. Nothing but the end of the source is passed over without a word.
//
// A row over the line limit is left out: its reader stops inside it, so what is left of it is read and thrown away.
// Where it stood inside quotes, reading goes on behind the line in which it stopped: a quote that was forgotten, or
// is data, would otherwise take in the rest of the file.
#pragma once

#include "CColumns.h"
#include "CFormulaGuard.h"
#include "COutputFile.h"
#include "CRejectFile.h"
#include "CReporter.h"
#include "CRowEncoder.h"
#include "CSourceReader.h"
#include "CSparseRange.h"
#include "SOptions.h"

#include <cstdint>
#include <string>
#include <vector>

namespace NSTQ::Tool {

/// What the pumps of all inputs of one output share.
struct SPumpTargets {
    COutputFile& output;
    CRejectFile* rejects; ///< may be null
    CColumns& columns;
};

class CRowPump {
public:
    /// All must outlive the pump.
    CRowPump(const SOptions& options, ISourceReader& reader, const SPumpTargets& targets, CReporter& reporter);

    /// Writes the column names, in the ANSI code page, unless an earlier input has brought them. False as
    /// from Run.
    bool WriteNames(const std::vector<std::string>& names);
    /// The same with the first row; the next row is then the first for what the options skip.
    bool WriteFirstRowAsNames();
    /// Runs to the end of the source, the wanted number of rows or the end of a pipe; false for the last. Throws
    /// CFailure.
    bool Run();

private:
    enum class EOutcome {
        Row,
        EofMark, ///< a row, or none, that an end-of-file mark ended before the file's end
        TooLong,
        End
    };

    EOutcome ReadRow();
    bool ReadRecord();
    bool GetLineData();
    void SkipRestOfRow();
    bool TakeRow(EOutcome outcome);
    void AddTooLong();
    std::string DescribeOpenQuote() const;
    bool NoteMark();
    void PrepareRow();
    bool WriteRow();
    void RejectRow();
    void EncodeRow();
    void CheckStrictly(const std::string& loss) const;
    void CutLengths();
    std::string DescribeRow() const;
    void AddNote(const std::string& note);
    void AddFault(EExitStatus status, const std::string& what, const std::string& done, const std::string& hint);

    const SOptions& m_options;
    ISourceReader& m_reader;
    NSTQCore::IDataAccess& m_rows;
    CRowEncoder m_encoder;
    CFormulaGuard m_guard;
    CSparseRange m_sparse;
    SPumpTargets m_targets;
    CReporter& m_reporter;

    const char** m_fields = nullptr;
    const WORD* m_lengths = nullptr;
    DWORD m_count = 0;
    LONGLONG m_recordSize = 0; ///< bytes of the file that the last record read took
    LONGLONG m_openQuote = -1; ///< where the row's quote opens that does not close

    LONGLONG m_rowStart = 0;
    DWORD m_writeCount = 0; ///< of the fields, how many are written

    std::uint64_t m_row = 0;        ///< the row in hand
    std::uint64_t m_headerRows = 0; ///< rows of the source that are names
    std::uint64_t m_written = 0;
    std::vector<WORD> m_cutLengths;
    bool m_isHeader = false; ///< the row in hand is names
    std::string m_note;      ///< what is to be reported about the row in hand
    std::string m_faults;    ///< why it cannot be taken whole; empty when it can
};

} // namespace NSTQ::Tool
