// Takes the rows of a source to the output and reports those that do not get there whole.
//
// Row numbers count the rows of the source from 1, those left out included.
//
// A row over the line limit is left out: its reader stops inside it, so what is left of it is read and thrown away.
// That reader has forgotten whether it stood inside quotes; with line ends allowed in quotes the rest of such a row
// may therefore be taken for more or fewer rows than it is.
//
// A character that the output's encoding does not have is replaced and its row reported; when the options are strict
// it ends the conversion.
#pragma once

#include "COutputFile.h"
#include "CReporter.h"
#include "CRowEncoder.h"
#include "CSourceReader.h"
#include "SOptions.h"

#include <cstdint>
#include <string>
#include <vector>

namespace NSTQ::Tool {

class CRowPump {
public:
    /// All must outlive the pump. `outputCodePage` is the encoding of the output.
    CRowPump(const SOptions& options, ISourceReader& reader, unsigned outputCodePage, COutputFile& output,
             CReporter& reporter);

    /// Writes a row of texts that are in the ANSI code page, such as names of columns. False as from Run.
    bool WriteNames(const std::vector<std::string>& names);
    /// Runs to the end of the source, the wanted number of rows or the end of a pipe. Throws CFailure.
    void Run();

private:
    enum EOutcome {
        RO_ROW,
        RO_EOF_MARK, ///< a row, or none, that an end-of-file mark ended before the file's end
        RO_TOO_LONG,
        RO_END
    };

    EOutcome ReadRow();
    bool ReadRecord();
    void SkipRestOfRow();
    bool TakeRow(EOutcome outcome);
    bool WriteRow();
    void EncodeRow(DWORD dwCount);
    void CutLengths(DWORD dwCount);
    void AddNote(const std::string& note);

    const SOptions& m_options;
    ISourceReader& m_reader;
    NSTQCore::IDataAccess& m_rows;
    CRowEncoder m_encoder;
    COutputFile& m_output;
    CReporter& m_reporter;

    const char** m_ppFields = nullptr;
    const WORD* m_pLengths = nullptr;
    DWORD m_dwCount = 0;
    LONGLONG m_llRecordSize = 0; ///< bytes of the file that the last record read took

    std::uint64_t m_ullRow = 0; ///< the row in hand
    std::uint64_t m_ullWritten = 0;
    std::vector<WORD> m_vecCutLengths;
    std::string m_strNote; ///< what is to be reported about the row in hand
};

} // namespace NSTQ::Tool
