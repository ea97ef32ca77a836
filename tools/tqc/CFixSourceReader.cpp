#include "CFixSourceReader.h"

#include <numeric>

namespace NSTQ::Tool {

std::uint64_t CFixSourceReader::LayoutSize(const std::vector<WORD>& widths) {
    return std::accumulate(widths.begin(), widths.end(), std::uint64_t{widths.size()});
}

std::vector<WORD> CFixSourceReader::LayOut(std::vector<WORD> widths, bool bHasLineEnds) {
    if (bHasLineEnds)
        widths.push_back(static_cast<WORD>(LIMIT_MAX - LayoutSize(widths)));
    return widths;
}

CFixSourceReader::CFixSourceReader(DWORD dwColumns, const CSourceDataInfo& info, const SLineEnd& lineEnd)
    : CSourceReader(dwColumns + 1, LIMIT_MAX, LIMIT_MAX, &info), m_dwColumns(dwColumns),
      m_cLastOfLineEnd(lineEnd.cPost != 0 ? lineEnd.cPost : lineEnd.cPre) {
    SetDelimiter(lineEnd.cPre, lineEnd.cPost);
}

bool CFixSourceReader::GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount) {
    m_bTextLeftOut = false;
    const LONGLONG start = GetPosition();
    const bool result = CSourceReader::GetLineData(ppData, pLen, dwCount);
    const LONGLONG size = GetPosition() - start;
    if (GetErrorCode() != 0 || !result || size == 0)
        return result;
    const bool isMarked = LastByte() == SCDataAccessDefine::SUB_CODE;
    if (dwCount > m_dwColumns) {
        dwCount = m_dwColumns;
        TakeRestOfLine(pLen);
    }
    if (isMarked && size == 1)
        dwCount = 0;
    return !isMarked || !HasNextLineData();
}

/// A line may be longer than the column that looks at its end; then the rest is passed over.
void CFixSourceReader::TakeRestOfLine(const WORD* pLen) {
    const char last = LastByte();
    const bool isInsideLine = HasNextLineData() && last != m_cLastOfLineEnd && last != SCDataAccessDefine::SUB_CODE;
    m_bTextLeftOut = pLen[m_dwColumns] > 0 || isInsideLine;
    if (isInsideLine)
        SkipPastLineEnd();
}

std::optional<SRowFault> CFixSourceReader::GetFault() const {
    if (!m_bTextLeftOut)
        return std::nullopt;
    return SRowFault{ES_UNSUPPORTED, "text behind the last column", "left out", "; try greater or more --widths"};
}

/// The byte before the next one to be read.
char CFixSourceReader::LastByte() const {
    return m_dwReadBuffPos > 0 ? static_cast<char>(m_pReadBuff[m_dwReadBuffPos - 1]) : m_cLastOfFill;
}

bool CFixSourceReader::OnReread() {
    if (m_dwReadSize > 0)
        m_cLastOfFill = static_cast<char>(m_pReadBuff[m_dwReadSize - 1]);
    return CSourceReader::OnReread();
}

} // namespace NSTQ::Tool
