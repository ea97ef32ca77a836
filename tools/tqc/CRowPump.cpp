#include "CRowPump.h"

#include "CFailure.h"
#include "SCErrorText.h"
#include "tqcAccess/CodePage.h"
#include "tqcAccess/ComError.h"

#include <algorithm>

namespace NSTQ::Tool {
namespace {

constexpr const char* OPEN_QUOTE_HINT = "; try --no-quote-newline";

} // namespace

CRowPump::CRowPump(const SOptions& options, ISourceReader& reader, const SPumpTargets& targets, CReporter& reporter)
    : m_options(options), m_reader(reader), m_rows(reader.Rows()),
      m_encoder(options.uOutputCodePage, options.bFormulaGuard ? CFormulaGuard::FIELD_LENGTH_MAX : LIMIT_MAX),
      m_guard(options.cOutputSeparator), m_targets(targets), m_reporter(reporter) {}

bool CRowPump::Run() {
    while (m_ullWritten < m_options.ullLimit && m_rows.HasNextLineData()) {
        const EOutcome outcome = ReadRow();
        if (outcome == RO_END)
            break;
        m_reporter.Progress().Show(m_rows.GetReadPosition());
        if (!TakeRow(outcome))
            return false;
    }
    return true;
}

bool CRowPump::WriteNames(const std::vector<std::string>& names) {
    std::vector<const char*> texts;
    std::vector<WORD> lengths;
    for (const std::string& name : names) {
        texts.push_back(name.data());
        lengths.push_back(static_cast<WORD>(name.size()));
    }
    m_ppFields = texts.data();
    m_pLengths = lengths.data();
    m_dwCount = static_cast<DWORD>(names.size());
    m_bNames = true;
    PrepareRow();
    std::vector<std::string> written;
    for (DWORD i = 0; i < m_dwWriteCount; ++i)
        written.emplace_back(m_ppFields[i], m_pLengths[i]);
    if (!m_strNote.empty())
        m_reporter.ReportRow(DescribeRow(), m_strNote);
    const bool goOn = !m_targets.columns.TakeNames(m_reporter.File(), written) ||
                      m_targets.output.WriteRow(m_ppFields, m_pLengths, m_dwWriteCount);
    m_bNames = false;
    return goOn;
}

bool CRowPump::WriteFirstRowAsNames() {
    EOutcome outcome = RO_END;
    do
        outcome = m_rows.HasNextLineData() ? ReadRow() : RO_END;
    while (outcome == RO_EOF_MARK && !NoteMark());
    if (outcome == RO_END)
        return true;
    if (outcome == RO_TOO_LONG)
        throw CFailure(ES_LIMIT, m_reporter.File(),
                       "its first row, which --header takes for names, has " +
                           std::to_string(m_options.dwMaxLineSize) + " bytes or more" +
                           (m_llOpenQuote >= 0 ? ": " + DescribeOpenQuote() + OPEN_QUOTE_HINT : ""));
    m_ullRow = m_ullHeaderRows = 1;
    std::vector<std::string> names;
    for (DWORD i = 0; i < std::min(m_dwCount, m_options.dwMaxFields + 1); ++i)
        names.emplace_back(m_ppFields[i], m_pLengths[i]);
    return WriteNames(names);
}

CRowPump::EOutcome CRowPump::ReadRow() {
    m_llRowStart = m_reader.GetPosition();
    const bool complete = ReadRecord();
    m_llOpenQuote = m_reader.GetOpenQuote();
    if (m_llRecordSize == 0)
        return RO_END;
    if (m_ppFields == nullptr) {
        SkipRestOfRow();
        return RO_TOO_LONG;
    }
    if (!complete)
        return RO_EOF_MARK;
    return m_dwCount > 0 ? RO_ROW : RO_END;
}

/// Reads one record; `m_ppFields` stays null when the line limit stopped it. The reader's result.
bool CRowPump::ReadRecord() {
    m_ppFields = nullptr;
    const LONGLONG start = m_reader.GetPosition();
    const bool complete = GetLineData();
    if (const DWORD code = m_rows.GetErrorCode(); code != 0)
        throw CFailure(ES_UNSUPPORTED, m_reporter.File(),
                       "cannot be read further after row " + std::to_string(m_ullRow) + ": " +
                           SCErrorText::OfLibrary(code));
    m_llRecordSize = m_reader.GetPosition() - start;
    return complete;
}

void CRowPump::SkipRestOfRow() {
    while (m_ppFields == nullptr && m_llRecordSize > 0)
        ReadRecord();
}

/// A row of a workbook or database that is too long for the reader cannot be passed over.
bool CRowPump::GetLineData() {
    try {
        return m_rows.GetLineData(m_ppFields, m_pLengths, m_dwCount);
    } catch (const Platform::_com_error& error) {
        if (error.Error() != Platform::DB_E_DATAOVERFLOW)
            throw;
        throw CFailure(ES_LIMIT, m_reporter.File(),
                       "row " + std::to_string(m_ullRow + 1) +
                           ": its texts together have more than 65535 bytes, the most there can be");
    }
}

/// Numbers the row, writes or rejects it when it is wanted, and reports it. False when nobody reads the output any
/// more.
bool CRowPump::TakeRow(EOutcome outcome) {
    const bool isEmptyMark = outcome == RO_EOF_MARK && m_dwCount == 0;
    m_strNote.clear();
    m_strFaults.clear();
    ++m_ullRow;
    bool goOn = true;
    if (m_ullRow - m_ullHeaderRows > m_options.ullSkip) {
        if (outcome == RO_TOO_LONG)
            AddTooLong();
        else if (outcome == RO_EOF_MARK)
            NoteMark();
        goOn = outcome == RO_TOO_LONG || isEmptyMark || WriteRow();
        if (!m_strFaults.empty() && m_options.eOnError == SOptions::OE_SKIP)
            RejectRow();
        if (!m_strNote.empty())
            m_reporter.ReportRow(DescribeRow(), m_strNote);
    }
    // A mark alone is no row: what follows it is the one that it stands before.
    m_ullRow -= isEmptyMark ? 1 : 0;
    return goOn;
}

void CRowPump::AddTooLong() {
    const std::string size = std::to_string(m_options.dwMaxLineSize) + " bytes";
    if (m_llOpenQuote >= 0)
        AddFault(ES_LIMIT, DescribeOpenQuote() + " before the row has " + size, "left out", OPEN_QUOTE_HINT);
    else
        AddFault(ES_LIMIT, size + " or more", "left out",
                 m_options.dwMaxLineSize < LIMIT_MAX ? "; try a greater --max-line-size" : ", the most there can be");
}

std::string CRowPump::DescribeOpenQuote() const {
    return "the quote at byte " + std::to_string(m_llOpenQuote) + " of the file does not close";
}

/// Whether an end-of-file mark ended a row; otherwise it stands before one.
bool CRowPump::NoteMark() {
    const bool isRow = m_dwCount > 0;
    AddNote(isRow ? "ended by an end-of-file mark (1A); what follows is the next row"
                  : "an end-of-file mark (1A) stands before it; dropped");
    return isRow;
}

bool CRowPump::WriteRow() {
    const char** const fields = m_ppFields;
    const WORD* const lengths = m_pLengths;
    PrepareRow();
    if (!m_strFaults.empty() && m_options.eOnError == SOptions::OE_SKIP) {
        m_ppFields = fields;
        m_pLengths = lengths;
        return true;
    }
    if (m_ullWritten == 0 && !m_options.bHeader)
        m_targets.columns.TakeCount(m_reporter.File(), m_dwCount);
    ++m_ullWritten;
    if (!m_reader.CountsBytes() && m_sparse.Count(m_pLengths, m_dwWriteCount))
        m_reporter.Note(m_sparse.Describe());
    return m_targets.output.WriteRow(m_ppFields, m_pLengths, m_dwWriteCount);
}

/// Makes of the fields what is to be written.
void CRowPump::PrepareRow() {
    if (m_llOpenQuote >= 0)
        AddFault(ES_UNSUPPORTED, DescribeOpenQuote(), "so that its field goes on to the end", OPEN_QUOTE_HINT);
    if (const auto fault = m_reader.GetFault())
        AddFault(fault->eStatus, fault->what, fault->done, fault->hint);
    m_dwWriteCount = std::min(m_dwCount, m_options.dwMaxFields);
    if (m_dwCount > m_dwWriteCount)
        AddFault(ES_LIMIT, "more than " + std::to_string(m_dwWriteCount) + " fields", "the others cut off",
                 "; try a greater --max-fields");
    if (m_options.dwMaxFieldSize < LIMIT_MAX)
        CutLengths();
    EncodeRow();
    // In the output's encoding: a character may become one that begins a formula only there.
    if (m_options.bFormulaGuard && !m_guard.Guard(m_ppFields, m_pLengths, m_dwWriteCount))
        AddFault(ES_LIMIT, "a field with its apostrophes has more than 65535 bytes", "cut", "");
}

void CRowPump::RejectRow() {
    m_strNote.insert(0, "rejected: ");
    if (m_targets.pRejects == nullptr)
        return;
    if (m_reader.CountsBytes())
        m_targets.pRejects->AddText(m_ullRow, m_llRowStart, m_reader.GetPosition() - m_llRowStart, m_strFaults);
    else
        m_targets.pRejects->AddFields(m_ullRow, m_ppFields, m_pLengths, m_dwCount, m_strFaults);
}

void CRowPump::EncodeRow() {
    if (m_encoder.IsIdle(m_reader.IsKnownUtf8()))
        return;
    m_encoder.Encode(m_ppFields, m_pLengths, m_dwWriteCount);
    if (const std::string& loss = m_encoder.SourceLoss(); !loss.empty()) {
        CheckStrictly(loss + "; try another --encoding");
        AddFault(ES_UNSUPPORTED, loss, "replaced", "; try another --encoding");
    }
    if (const std::string& loss = m_encoder.Loss(); !loss.empty()) {
        CheckStrictly(loss);
        if (m_options.bStrict)
            AddFault(ES_UNSUPPORTED, loss, "", "");
        else
            AddNote("replaced: " + loss);
    }
}

/// Ends a conversion that is strict and says nothing else of its faults.
void CRowPump::CheckStrictly(const std::string& loss) const {
    if (m_options.bStrict && m_options.eOnError == SOptions::OE_KEEP)
        throw CFailure(ES_UNSUPPORTED, m_reporter.File(),
                       DescribeRow() + ": " + loss + "; without --strict they are replaced");
}

/// Puts lengths within the field limit in place of the reader's when one is above it.
void CRowPump::CutLengths() {
    const WORD* const end = m_pLengths + m_dwWriteCount;
    const WORD* const first =
        std::find_if(m_pLengths, end, [this](WORD length) { return length > m_options.dwMaxFieldSize; });
    if (first == end)
        return;
    AddFault(ES_LIMIT,
             "field " + std::to_string(first - m_pLengths + 1) + " has " + std::to_string(*first) + " bytes", "cut",
             "; try a greater --max-field-size");
    m_vecCutLengths.assign(m_pLengths, end);
    for (DWORD i = 0; i < m_dwWriteCount; ++i)
        m_vecCutLengths[i] =
            static_cast<WORD>(Platform::KeptTextLength(m_ppFields[i], m_pLengths[i], m_options.dwMaxFieldSize));
    m_pLengths = m_vecCutLengths.data();
}

std::string CRowPump::DescribeRow() const {
    return m_bNames && m_ullRow == 0 ? "the names of the columns" : "row " + std::to_string(m_ullRow);
}

/// A fault stops the conversion when the options say so; names, without which the rows mean nothing, are not skipped.
void CRowPump::AddFault(EExitStatus eStatus, const std::string& what, const std::string& done,
                        const std::string& hint) {
    const bool isKept = m_options.eOnError == SOptions::OE_KEEP;
    if (m_options.eOnError == SOptions::OE_STOP || (m_bNames && !isKept))
        throw CFailure(eStatus, m_reporter.File(), DescribeRow() + ": " + what + hint);
    m_strFaults += (m_strFaults.empty() ? "" : "; ") + what;
    AddNote(what + (isKept ? ", " + done : "") + hint);
}

void CRowPump::AddNote(const std::string& note) {
    m_strNote += (m_strNote.empty() ? "" : "; ") + note;
}

} // namespace NSTQ::Tool
