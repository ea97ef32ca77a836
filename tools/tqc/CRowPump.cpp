#include "CRowPump.h"

#include "CFailure.h"
#include "SCErrorText.h"
#include "platform/CodePage.h"

#include <algorithm>

namespace NSTQ::Tool {

CRowPump::CRowPump(const SOptions& options, ISourceReader& reader, unsigned outputCodePage, COutputFile& output,
                   CReporter& reporter)
    : m_options(options), m_reader(reader), m_rows(reader.Rows()), m_encoder(outputCodePage), m_output(output),
      m_reporter(reporter) {}

void CRowPump::Run() {
    while (m_ullWritten < m_options.ullLimit && m_rows.HasNextLineData()) {
        const EOutcome outcome = ReadRow();
        if (outcome == RO_END)
            break;
        m_reporter.Progress().Show(m_rows.GetReadPosition());
        if (!TakeRow(outcome))
            return;
    }
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
    const auto count = static_cast<DWORD>(names.size());
    EncodeRow(count);
    return m_output.WriteRow(m_ppFields, m_pLengths, count);
}

CRowPump::EOutcome CRowPump::ReadRow() {
    const bool complete = ReadRecord();
    if (m_llRecordSize == 0) {
        if (m_rows.HasNextLineData())
            throw CFailure(ES_UNSUPPORTED, m_options.strFile, "the file became shorter while it was read; try again");
        return RO_END;
    }
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
    const bool complete = m_rows.GetLineData(m_ppFields, m_pLengths, m_dwCount);
    if (const DWORD code = m_rows.GetErrorCode(); code != 0)
        throw CFailure(ES_UNSUPPORTED, m_options.strFile,
                       "cannot be read further after row " + std::to_string(m_ullRow) + ": " +
                           SCErrorText::OfLibrary(code));
    m_llRecordSize = m_reader.GetPosition() - start;
    return complete;
}

void CRowPump::SkipRestOfRow() {
    while (m_ppFields == nullptr && m_llRecordSize > 0)
        ReadRecord();
}

/// Numbers the row, writes it when it is wanted, and reports it. False when nobody reads the output any more.
bool CRowPump::TakeRow(EOutcome outcome) {
    const bool isEmptyMark = outcome == RO_EOF_MARK && m_dwCount == 0;
    const std::uint64_t row = m_ullRow + 1;
    // A mark alone is no row: what follows it is the one that it stands before.
    if (!isEmptyMark)
        m_ullRow = row;
    if (row <= m_options.ullSkip)
        return true;
    m_strNote = m_reader.TakeNote();
    if (outcome == RO_TOO_LONG)
        AddNote(
            "left out: " + std::to_string(m_options.dwMaxLineSize) + " bytes or more" +
            (m_options.dwMaxLineSize < LIMIT_MAX ? "; try a greater --max-line-size" : ", the most there can be"));
    else if (outcome == RO_EOF_MARK)
        AddNote(isEmptyMark ? "an end-of-file mark (1A) stands before it; dropped"
                            : "ended by an end-of-file mark (1A); what follows is the next row");
    const bool goOn = outcome == RO_TOO_LONG || isEmptyMark || WriteRow();
    if (!m_strNote.empty())
        m_reporter.ReportRow(row, m_strNote);
    return goOn;
}

bool CRowPump::WriteRow() {
    const DWORD count = std::min(m_dwCount, m_options.dwMaxFields);
    if (m_dwCount > count)
        AddNote("more than " + std::to_string(count) + " fields, the others cut off; try a greater --max-fields");
    if (m_options.dwMaxFieldSize < LIMIT_MAX)
        CutLengths(count);
    EncodeRow(count);
    ++m_ullWritten;
    return m_output.WriteRow(m_ppFields, m_pLengths, count);
}

void CRowPump::EncodeRow(DWORD dwCount) {
    if (m_encoder.IsIdle())
        return;
    m_encoder.Encode(m_ppFields, m_pLengths, dwCount);
    if (m_encoder.Loss().empty())
        return;
    if (m_options.bStrict)
        throw CFailure(ES_UNSUPPORTED, m_options.strFile,
                       "row " + std::to_string(m_ullRow) + ": " + m_encoder.Loss() +
                           "; without --strict they are replaced");
    AddNote("replaced: " + m_encoder.Loss());
}

/// Puts lengths within the field limit in place of the reader's when one is above it.
void CRowPump::CutLengths(DWORD dwCount) {
    const WORD* const end = m_pLengths + dwCount;
    const WORD* const first =
        std::find_if(m_pLengths, end, [this](WORD length) { return length > m_options.dwMaxFieldSize; });
    if (first == end)
        return;
    AddNote("field " + std::to_string(first - m_pLengths + 1) + " has " + std::to_string(*first) +
            " bytes, cut; try a greater --max-field-size");
    m_vecCutLengths.assign(m_pLengths, end);
    for (DWORD i = 0; i < dwCount; ++i)
        m_vecCutLengths[i] =
            static_cast<WORD>(Platform::KeptTextLength(m_ppFields[i], m_pLengths[i], m_options.dwMaxFieldSize));
    m_pLengths = m_vecCutLengths.data();
}

void CRowPump::AddNote(const std::string& note) {
    m_strNote += (m_strNote.empty() ? "" : "; ") + note;
}

} // namespace NSTQ::Tool
