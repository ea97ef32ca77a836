#include "CFixDataAccess.h"

#include "platform/files/Files.h"
#include "scan/Kernel.h"
#include "text/CFillCursor.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace NSTQ::NSTQCore {

CFixDataAccess::CFixDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize,
                               const CSourceDataInfo* pInfo)
    : VCTextFileOperater(dwMaxFieldCnt, dwMaxLineSize, dwMaxFieldSize), m_dwFieldSizeLimit(dwMaxFieldSize),
      m_dwLineSizeLimit(std::min(dwMaxLineSize, DWORD{LINE_SIZE_MAX})), m_dwFieldCntLimit(dwMaxFieldCnt),
      m_wFixColCnt(0), m_bIsExistFixCRLF(pInfo->GetIsExistFixCRLF() ? 1 : 0) {
    const std::vector<WORD> widths = pInfo->GetFixColLen();
    m_wFixColCnt = static_cast<WORD>(widths.size());
    m_pFixColLen = std::make_unique<WORD[]>(m_wFixColCnt);
    std::copy_n(widths.begin(), m_wFixColCnt, m_pFixColLen.get());
}

CFixDataAccess::~CFixDataAccess() = default;

bool CFixDataAccess::_FitsLineBuffer() const {
    const WORD* widths = m_pFixColLen.get();
    return std::accumulate(widths, widths + m_wFixColCnt, std::uint64_t{m_wFixColCnt}) <=
           std::uint64_t{m_dwLineSizeLimit} + 1;
}

bool CFixDataAccess::FileOpen(const CSourceDataInfo* pInfo) {
    if (!_FitsLineBuffer()) {
        FileClose();
        m_dwErrorCode = Platform::ERROR_INVALID_PARAMETER;
        return false;
    }
    return VCTextFileOperater::FileOpen(pInfo);
}

namespace {

/// Reads a column of `dwWidth` bytes to `pOut`; returns the end of its text without trailing spaces. `bEnded` is
/// set when a line end or SUB has ended the record.
template <class CCursor>
[[gnu::always_inline]] inline char* ReadColumn(CCursor& cursor, DWORD dwWidth, char* pOut, bool& bEnded) {
    char* trimmed = pOut;
    bool atStart = true;
    for (DWORD taken = 0; cursor.HasNext() && taken < dwWidth; ++taken) {
        const unsigned char byte = cursor.Get();
        cursor.Consume();
        if (byte > SCDataAccessDefine::SPACE_CODE) {
            *pOut++ = static_cast<char>(byte);
            trimmed = pOut;
            atStart = false;
        } else if (cursor.IsPreDelimiter(byte)) {
            bEnded = cursor.TakePostDelimiter();
        } else if (byte == SCDataAccessDefine::SUB_CODE) {
            cursor.HasNext();
            bEnded = true;
        } else if (!atStart && byte == SCDataAccessDefine::SPACE_CODE) {
            *pOut++ = SCDataAccessDefine::SPACE_CODE;
        } else if (!atStart && byte == SCDataAccessDefine::TAB_CODE) {
            *pOut++ = SCDataAccessDefine::SPACE_CODE;
            trimmed = pOut;
        }
        if (bEnded)
            break;
    }
    return trimmed;
}

} // namespace

/// Takes the columns from number `dwColumn` that a kernel finds ordinary; returns where the next field is written.
[[gnu::always_inline]] inline char* CFixDataAccess::_ReadOrdinaryColumns(CFillCursor& cursor, char* pField,
                                                                         DWORD& dwColumn) const {
    const Scan::SKernel& kernel = Scan::GetKernel();
    const DWORD columnCount = std::min<DWORD>(m_wFixColCnt, m_dwFieldCntLimit);
    if (kernel.readColumns == nullptr || m_cPreDelimiter == SCDataAccessDefine::SPACE_CODE || dwColumn >= columnCount)
        return pField;
    const unsigned char* const next = cursor.Bytes();
    Scan::SColumns columns{.next = next,
                           .end = next + cursor.CountBytes(),
                           .field = pField,
                           .fieldEnd = m_pLineBuff.get() + m_dwLineSizeLimit,
                           .data = m_ppFieldData.get(),
                           .lengths = m_pFieldLen.get(),
                           .widths = m_pFixColLen.get(),
                           .columnCount = columnCount,
                           .column = dwColumn,
                           .fieldSize = m_dwFieldSizeLimit};
    kernel.readColumns(columns);
    cursor.Consume(static_cast<DWORD>(columns.next - next));
    dwColumn = columns.column;
    return columns.field;
}

bool CFixDataAccess::GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount) {
    InitialErrorCode();
    dwCount = 0;
    if (m_hFile == nullptr)
        return false;
    CFillCursor cursor(*this);
    char* field = m_pLineBuff.get();
    const char* const end = field + m_dwLineSizeLimit;
    bool ended = false;
    while (!ended) {
        field = _ReadOrdinaryColumns(cursor, field, dwCount);
        if (dwCount >= m_wFixColCnt)
            break;
        const DWORD width = m_pFixColLen[dwCount];
        if (width > end - field) {
            cursor.Leave();
            return false;
        }
        const char* const fieldEnd = ReadColumn(cursor, width, field, ended);
        if (dwCount < m_dwFieldCntLimit) {
            const DWORD length = FinishField(field, static_cast<DWORD>(fieldEnd - field), m_dwFieldSizeLimit);
            m_ppFieldData[dwCount] = field;
            m_pFieldLen[dwCount] = static_cast<WORD>(length);
            field += length + 1;
        }
        ++dwCount;
    }
    // Usually the line end follows directly.
    if (field != m_pLineBuff.get() && m_bIsExistFixCRLF != 0 && !ended && cursor.CountBytes() >= 2 &&
        cursor.IsPreDelimiter(cursor.Get())) {
        cursor.Consume();
        ended = cursor.TakePostDelimiter();
    }
    cursor.Leave();
    const bool result = _FinishRecord(field != m_pLineBuff.get(), ended);
    // If a record ends with the last byte of the fill, refill now, so that HasNextLineData is exact.
    HasNextRecordByte();
    ppData = m_ppFieldData.get();
    pLen = m_pFieldLen.get();
    return result;
}

/// Skips the rest of the line, if records have line ends, and returns whether the record is complete.
bool CFixDataAccess::_FinishRecord(bool bStored, bool bEnded) {
    if (!bStored)
        return !HasNextLineData();
    if (m_bIsExistFixCRLF == 0 || bEnded)
        return true;
    return SkipPastLineEnd() || !HasNextLineData();
}

} // namespace NSTQ::NSTQCore
