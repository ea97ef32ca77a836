#include "CFixSourceReader.h"

#include <numeric>

namespace NSTQ::Tool {

std::uint64_t CFixSourceReader::LayoutSize(const std::vector<WORD>& widths) {
    return std::accumulate(widths.begin(), widths.end(), std::uint64_t{widths.size()});
}

std::vector<WORD> CFixSourceReader::LayOut(std::vector<WORD> widths, bool hasLineEnds) {
    if (hasLineEnds)
        widths.push_back(static_cast<WORD>(maxLength - LayoutSize(widths)));
    return widths;
}

CFixSourceReader::CFixSourceReader(DWORD columns, const CSourceDataInfo& info, const SLineEnd& lineEnd,
                                   bool hasLineEnds)
    : CSourceReader(columns + 1, maxLength, maxLength, &info), m_columns(columns), m_hasLineEnds(hasLineEnds),
      m_lastOfLineEnd(lineEnd.second != 0 ? lineEnd.second : lineEnd.first) {
    SetDelimiter(lineEnd.first, lineEnd.second);
}

bool CFixSourceReader::GetLineData(const char**& fields, const WORD*& lengths, DWORD& count) {
    m_isTextLeftOut = false;
    const LONGLONG start = GetPosition();
    const bool result = CSourceReader::GetLineData(fields, lengths, count);
    const LONGLONG size = GetPosition() - start;
    if (GetErrorCode() != 0 || !result || size == 0)
        return result;
    const bool isMarked = LastByte() == SCDataAccessDefine::SUB_CODE;
    if (count > m_columns) {
        count = m_columns;
        TakeRestOfLine(lengths);
    }
    if (isMarked && size == 1)
        count = 0;
    return !isMarked || !HasNextLineData();
}

/// Text without line ends has rows instead.
bool CFixSourceReader::SkipLine() {
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    return m_hasLineEnds ? SkipPastLineEnd() : GetLineData(fields, lengths, count) && count > 0;
}

/// A line may be longer than the column that checks its end; then the rest is skipped.
void CFixSourceReader::TakeRestOfLine(const WORD* lengths) {
    const char last = LastByte();
    const bool isInsideLine = HasNextLineData() && last != m_lastOfLineEnd && last != SCDataAccessDefine::SUB_CODE;
    m_isTextLeftOut = lengths[m_columns] > 0 || isInsideLine;
    if (isInsideLine)
        SkipPastLineEnd();
}

std::optional<SRowFault> CFixSourceReader::GetFault() const {
    if (!m_isTextLeftOut)
        return std::nullopt;
    return SRowFault{EExitStatus::Unsupported, "text after the last column", "left out",
                     "; try larger or more --widths", std::nullopt};
}

/// The byte before the next one to be read.
char CFixSourceReader::LastByte() const {
    return m_dwReadBuffPos > 0 ? static_cast<char>(m_pReadBuff[m_dwReadBuffPos - 1]) : m_lastOfFill;
}

bool CFixSourceReader::OnReread() {
    if (m_dwReadSize > 0)
        m_lastOfFill = static_cast<char>(m_pReadBuff[m_dwReadSize - 1]);
    return CSourceReader::OnReread();
}

} // namespace NSTQ::Tool
