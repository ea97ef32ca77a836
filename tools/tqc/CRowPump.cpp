#include "CRowPump.h"

#include "CFailure.h"
#include "SCPathText.h"
#include "tqcAccess/CodePage.h"
#include "tqcAccess/ComError.h"
#include "tqcAccess/ErrorText.h"

#include <algorithm>
#include <limits>

namespace NSTQ::Tool {
namespace {

constexpr std::size_t textMax = 32000;
constexpr const char* openQuoteHint = "; try --no-quote-newline";

} // namespace

CRowPump::CRowPump(const SOptions& options, ISourceReader& reader, const SPumpTargets& targets, CReporter& reporter)
    : m_options(options), m_reader(reader), m_countsBytes(reader.CountsBytes()), m_rows(reader.Rows()),
      m_encoder(options.outputCodePage, options.formulaGuard ? CFormulaGuard::maxFieldLength : maxLength),
      m_guard(options.outputSeparator), m_selection(options.columns, options.excludedColumns),
      m_changesNone(m_selection.IsIdle() && options.maxFieldSize >= maxLength && !options.formulaGuard),
      m_targets(targets), m_reporter(reporter) {
    if (!reader.OriginalEncoding().empty())
        m_encoder.SetSourceName(reader.OriginalEncoding());
    if (m_changesNone && options.maxFields == maxLength && m_encoder.IsIdle(true) &&
        targets.output.TextForm() != nullptr)
        m_text.resize(textMax);
}

bool CRowPump::Run() {
    bool goOn = true;
    while (goOn && m_written < m_options.limit && m_rows.HasNextLineData()) {
        if (CopyPlainRows() > 0) {
            ShowProgress();
            goOn = m_targets.output.WriteText(m_text.data(), m_textSize);
            continue;
        }
        const EOutcome outcome = ReadRow();
        if (outcome == EOutcome::End)
            break;
        ShowProgress();
        goOn = IsWrittenAsRead(outcome) ? WriteAsRead() : TakeRow(outcome);
    }
    return goOn;
}

void CRowPump::ShowProgress() {
    if (CInputReport& progress = m_reporter.Progress(); progress.IsAwaited())
        progress.Show(m_rows.GetReadPosition());
}

/// Takes rows of which nothing is to be examined, changed or reported, after the first one. Where there are none it
/// is tried again after more and more rows.
DWORD CRowPump::CopyPlainRows() {
    constexpr std::uint64_t countMax = std::numeric_limits<DWORD>::max();
    constexpr std::uint64_t pauseMax = 64;
    if (m_text.empty() || m_written == 0 || m_row < m_copyFrom)
        return 0;
    m_textSize = static_cast<DWORD>(m_text.size());
    const auto maxCount = static_cast<DWORD>(std::min(m_options.limit - m_written, countMax));
    const DWORD count = m_reader.CopyPlainRecords(*m_targets.output.TextForm(), !m_encoder.IsIdle(false), maxCount,
                                                  m_text.data(), m_textSize);
    m_row += count;
    m_written += count;
    m_pause = count > 0 ? 1 : std::min(m_pause * 2, pauseMax);
    m_copyFrom = m_row + (count > 0 ? 0 : m_pause);
    return count;
}

bool CRowPump::Begin(const std::vector<std::string>* names) {
    SkipLines();
    if (m_options.header)
        return names != nullptr ? WriteNames(*names) : WriteFirstRowAsNames();
    if (names != nullptr)
        SelectByNames(*names);
    return true;
}

void CRowPump::SkipLines() {
    m_row = m_rowsBefore = m_reader.SkipLines(m_options.skip);
    CheckReading(m_rows.GetErrorCode());
    if (m_row < m_options.skip)
        m_reporter.Note("nothing is left after the first " + std::to_string(m_options.skip) +
                        " lines; try a smaller --skip");
}

/// The names are in the ANSI code page.
void CRowPump::SelectByNames(const std::vector<std::string>& names) {
    if (m_selection.IsIdle())
        return;
    std::vector<std::string> utf8;
    utf8.reserve(names.size());
    for (const std::string& name : names)
        utf8.push_back(SCPathText::Convert(name, Platform::GetAnsiCodePage(), Platform::CP_UTF8));
    m_selection.Resolve(m_reporter.File(), utf8);
}

bool CRowPump::WriteNames(const std::vector<std::string>& names) {
    std::vector<const char*> texts;
    std::vector<WORD> lengths;
    for (const std::string& name : names) {
        texts.push_back(name.data());
        lengths.push_back(static_cast<WORD>(name.size()));
    }
    m_fields = texts.data();
    m_lengths = lengths.data();
    m_count = static_cast<DWORD>(names.size());
    m_isHeader = true;
    SelectByNames(names);
    PrepareRow();
    std::vector<std::string> written;
    for (DWORD i = 0; i < m_writeCount; ++i)
        written.emplace_back(m_fields[i], m_lengths[i]);
    if (!m_note.empty())
        m_reporter.ReportRow(DescribeRow(), m_note);
    const bool goOn = !m_targets.columns.TakeNames(m_reporter.File(), written) ||
                      m_targets.output.WriteNames(m_fields, m_lengths, m_writeCount);
    m_isHeader = false;
    return goOn;
}

bool CRowPump::WriteFirstRowAsNames() {
    EOutcome outcome = EOutcome::End;
    do
        outcome = m_rows.HasNextLineData() ? ReadRow() : EOutcome::End;
    while (outcome == EOutcome::EofMark && !NoteMark());
    if (outcome == EOutcome::End)
        return true;
    if (outcome == EOutcome::TooLong)
        throw CFailure(EExitStatus::Limit, m_reporter.File(),
                       "the header row has " + std::to_string(m_options.maxLineSize) + " bytes or more" +
                           (m_openQuote >= 0 ? ": " + DescribeOpenQuote() + openQuoteHint : ""));
    m_rowsBefore = ++m_row;
    std::vector<std::string> names;
    for (DWORD i = 0; i < std::min(m_count, m_options.maxFields + 1); ++i)
        names.emplace_back(m_fields[i], m_lengths[i]);
    return WriteNames(names);
}

CRowPump::EOutcome CRowPump::ReadRow() {
    ReadRecord();
    m_rowStart = m_record.start;
    m_openQuote = m_record.openQuote;
    if (m_record.end == m_record.start)
        return EOutcome::End;
    if (m_record.fields == nullptr) {
        SkipRestOfRow();
        return EOutcome::TooLong;
    }
    if (!m_record.isComplete)
        return EOutcome::EofMark;
    return m_count > 0 ? EOutcome::Row : EOutcome::End;
}

/// A row of a workbook or database that is too long for the reader cannot be skipped.
void CRowPump::ReadRecord() {
    try {
        m_reader.ReadRecord(m_record);
    } catch (const Platform::_com_error& error) {
        if (error.Error() != Platform::DB_E_DATAOVERFLOW)
            throw;
        throw CFailure(EExitStatus::Limit, m_reporter.File(),
                       "row " + std::to_string(m_row + 1) +
                           ": its fields together have more than 65535 bytes, which is the maximum");
    }
    CheckReading(m_record.errorCode);
    m_fields = m_record.fields;
    m_lengths = m_record.lengths;
    m_count = m_record.count;
}

void CRowPump::CheckReading(DWORD code) const {
    if (code != 0) [[unlikely]]
        throw CFailure(EExitStatus::Unsupported, m_reporter.File(),
                       "reading failed after row " + std::to_string(m_row) + ": " + Platform::GetErrorText(code));
}

void CRowPump::SkipRestOfRow() {
    while (m_record.fields == nullptr && m_record.end != m_record.start)
        ReadRecord();
}

/// Whether nothing of the row is to be examined, changed or reported: of most rows that is known from the record.
bool CRowPump::IsWrittenAsRead(EOutcome outcome) const {
    return outcome == EOutcome::Row && m_changesNone && m_written > 0 && m_openQuote < 0 && !m_record.hasFault &&
           m_count <= m_options.maxFields && m_encoder.IsIdle(m_record.isKnownUtf8);
}

/// Numbers the row, writes or rejects it unless it is skipped, and reports it. False when the reader has closed the
/// output pipe.
bool CRowPump::TakeRow(EOutcome outcome) {
    const bool isEmptyMark = outcome == EOutcome::EofMark && m_count == 0;
    m_note.clear();
    m_faults.clear();
    ++m_row;
    bool goOn = true;
    if (m_row - m_rowsBefore > m_options.skipRows) {
        if (outcome == EOutcome::TooLong)
            AddTooLong();
        else if (outcome == EOutcome::EofMark)
            NoteMark();
        goOn = outcome == EOutcome::TooLong || isEmptyMark || WriteRow();
        if (!m_faults.empty() && m_options.onError == SOptions::EOnError::Skip)
            RejectRow();
        if (!m_note.empty())
            m_reporter.ReportRow(DescribeRow(), m_note);
    }
    // A single SUB is not a row: the row after it gets the number.
    m_row -= isEmptyMark ? 1 : 0;
    return goOn;
}

void CRowPump::AddTooLong() {
    const std::string size = std::to_string(m_options.maxLineSize) + " bytes";
    if (m_openQuote >= 0)
        AddFault(EExitStatus::Limit, DescribeOpenQuote() + " before the row has " + size, "left out", openQuoteHint);
    else
        AddFault(EExitStatus::Limit, size + " or more", "left out",
                 m_options.maxLineSize < maxLength ? "; try a larger --max-line-size" : "; that is the maximum");
}

std::string CRowPump::DescribeOpenQuote() const {
    const char* const form = m_reader.OriginalEncoding().empty() ? "" : " in UTF-8";
    return "the quote at byte " + std::to_string(m_openQuote) + " of the file" + form + " is not closed";
}

/// Whether a SUB ended a row; otherwise it is before one.
bool CRowPump::NoteMark() {
    const bool isRow = m_count > 0;
    AddNote(isRow ? "ended by a SUB byte (1A); the next row begins after it"
                  : "a SUB byte (1A) before it was dropped");
    return isRow;
}

bool CRowPump::WriteRow() {
    const char** const fields = m_fields;
    const WORD* const lengths = m_lengths;
    PrepareRow();
    if (!m_faults.empty() && m_options.onError == SOptions::EOnError::Skip) {
        m_fields = fields;
        m_lengths = lengths;
        return true;
    }
    if (m_written == 0 && !m_options.header)
        m_targets.columns.TakeCount(m_reporter.File(), m_selection.IsIdle() ? m_count : m_writeCount);
    return WriteFields();
}

/// As TakeRow.
bool CRowPump::WriteAsRead() {
    ++m_row;
    m_writeCount = m_count;
    return WriteFields();
}

bool CRowPump::WriteFields() {
    ++m_written;
    if (!m_countsBytes && m_sparse.Count(m_lengths, m_writeCount))
        m_reporter.Note(m_sparse.Describe());
    return m_targets.output.WriteRow(m_fields, m_lengths, m_writeCount);
}

/// Converts the fields to those that are written.
void CRowPump::PrepareRow() {
    if (m_openQuote >= 0)
        AddFault(EExitStatus::Unsupported, DescribeOpenQuote(), "so its field extends to the end", openQuoteHint);
    m_writeCount = std::min(m_count, m_options.maxFields);
    if (!m_selection.IsIdle() && !m_selection.IsResolved())
        m_selection.Resolve(m_reporter.File(), m_writeCount);
    if (const auto fault = m_record.hasFault ? m_reader.GetFault() : std::nullopt;
        fault && (!fault->column || m_selection.Has(*fault->column)))
        AddFault(fault->status, fault->what, fault->done, fault->hint);
    if (m_count > m_writeCount)
        AddFault(EExitStatus::Limit, "more than " + std::to_string(m_writeCount) + " fields", "the others left out",
                 "; try a larger --max-fields");
    if (!m_selection.IsIdle())
        m_selection.Apply(m_fields, m_lengths, m_writeCount);
    if (m_options.maxFieldSize < maxLength)
        CutLengths();
    EncodeRow();
    // After encoding: only then a character may become one that begins a formula.
    if (m_options.formulaGuard && !m_guard.Guard(m_fields, m_lengths, m_writeCount))
        AddFault(EExitStatus::Limit, "a field with its apostrophes has more than 65535 bytes", "truncated", "");
}

void CRowPump::RejectRow() {
    m_note.insert(0, "rejected: ");
    if (m_targets.rejects == nullptr)
        return;
    if (m_countsBytes)
        m_targets.rejects->AddText(m_row, m_rowStart, m_record.end - m_rowStart, m_faults);
    else
        m_targets.rejects->AddFields(m_row, m_fields, m_lengths, m_count, m_faults);
}

void CRowPump::EncodeRow() {
    if (m_encoder.IsIdle(m_record.isKnownUtf8))
        return;
    m_encoder.Encode(m_fields, m_lengths, m_writeCount);
    if (const std::string& loss = m_encoder.SourceLoss(); !loss.empty()) {
        CheckStrictly(loss + "; try another --encoding");
        AddFault(EExitStatus::Unsupported, loss, "replaced", "; try another --encoding");
    }
    if (const std::string& loss = m_encoder.Loss(); !loss.empty()) {
        CheckStrictly(loss);
        if (m_options.strict)
            AddFault(EExitStatus::Unsupported, loss, "", "");
        else
            AddNote("replaced: " + loss);
    }
}

/// Ends a strict conversion that has no other option for invalid rows.
void CRowPump::CheckStrictly(const std::string& loss) const {
    if (m_options.strict && m_options.onError == SOptions::EOnError::Keep)
        throw CFailure(EExitStatus::Unsupported, m_reporter.File(),
                       DescribeRow() + ": " + loss + "; without --strict they are replaced");
}

/// Replaces the lengths by ones within the field limit, if one is above it.
void CRowPump::CutLengths() {
    const WORD* const end = m_lengths + m_writeCount;
    const WORD* const first =
        std::find_if(m_lengths, end, [this](WORD length) { return length > m_options.maxFieldSize; });
    if (first == end)
        return;
    AddFault(EExitStatus::Limit,
             "field " + std::to_string(m_selection.SourceOf(static_cast<std::size_t>(first - m_lengths)) + 1) +
                 " has " + std::to_string(*first) + " bytes",
             "truncated", "; try a larger --max-field-size");
    m_cutLengths.assign(m_lengths, end);
    for (DWORD i = 0; i < m_writeCount; ++i)
        m_cutLengths[i] =
            static_cast<WORD>(Platform::KeptTextLength(m_fields[i], m_lengths[i], m_options.maxFieldSize));
    m_lengths = m_cutLengths.data();
}

std::string CRowPump::DescribeRow() const {
    return m_isHeader && m_row == 0 ? "the column names" : "row " + std::to_string(m_row);
}

/// A fault stops the conversion if the options require it; a header row, without which the rows have no meaning, is
/// never skipped.
void CRowPump::AddFault(EExitStatus status, const std::string& what, const std::string& done,
                        const std::string& hint) {
    const bool isKept = m_options.onError == SOptions::EOnError::Keep;
    if (m_options.onError == SOptions::EOnError::Stop || (m_isHeader && !isKept))
        throw CFailure(status, m_reporter.File(), DescribeRow() + ": " + what + hint);
    m_faults += (m_faults.empty() ? "" : "; ") + what;
    AddNote(what + (isKept ? ", " + done : "") + hint);
}

void CRowPump::AddNote(const std::string& note) {
    m_note += (m_note.empty() ? "" : "; ") + note;
}

} // namespace NSTQ::Tool
