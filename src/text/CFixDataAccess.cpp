#include "CFixDataAccess.h"

#include "platform/files/Files.h"
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

/// Reads a column of `dwWidth` bytes to `pOut`; returns the end of its text without trailing spaces. `bEnded` tells
/// that a line end or an end-of-file mark has ended the record.
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

bool CFixDataAccess::GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount) {
    InitialErrorCode();
    dwCount = 0;
    if (m_hFile == nullptr)
        return false;
    CFillCursor cursor(*this);
    char* field = m_pLineBuff.get();
    const char* const end = field + m_dwLineSizeLimit;
    bool ended = false;
    for (; dwCount < m_wFixColCnt && !ended; ++dwCount) {
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
    }
    cursor.Leave();
    const bool result = _FinishRecord(field != m_pLineBuff.get(), ended);
    // A record that ends with the fill's last byte makes the refill now, so that HasNextLineData is exact.
    HasNextRecordByte();
    ppData = m_ppFieldData.get();
    pLen = m_pFieldLen.get();
    return result;
}

/// Passes over what is left of the line, where records have line ends, and tells whether the record is whole.
bool CFixDataAccess::_FinishRecord(bool bStored, bool bEnded) {
    if (!bStored)
        return !HasNextLineData();
    if (m_bIsExistFixCRLF == 0 || bEnded)
        return true;
    return SkipPastLineEnd() || !HasNextLineData();
}

} // namespace NSTQ::NSTQCore
