#include "CFixDataAccess.h"

#include "platform/files/Files.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace NSTQ::NSTQCore {

namespace {

/// Lengths and offsets in the line buffer have 16 bits.
constexpr DWORD LINE_SIZE_MAX = 65535;

} // namespace

/// Where the reading of one record stands.
struct CFixDataAccess::SRecordState {
    WORD wOffset = 0;     ///< where the column in hand begins in the line buffer
    WORD wLength = 0;     ///< bytes of the column in hand
    WORD wTrailing = 0;   ///< how many of them are spaces at its end
    bool bEnded = false;  ///< a line end or an end-of-file mark has ended the record
    bool bStored = false; ///< the field arrays hold something
};

CFixDataAccess::CFixDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize,
                               const CSourceDataInfo* pInfo)
    : VCTextFileOperater(dwMaxFieldCnt, dwMaxLineSize, dwMaxFieldSize), m_dwFieldSizeLimit(dwMaxFieldSize),
      m_dwLineSizeLimit(std::min(dwMaxLineSize, LINE_SIZE_MAX)), m_dwFieldCntLimit(dwMaxFieldCnt), m_wFixColCnt(0),
      m_bIsExistFixCRLF(pInfo->GetIsExistFixCRLF() ? 1 : 0) {
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

bool CFixDataAccess::GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount) {
    InitialErrorCode();
    dwCount = 0;
    if (m_hFile == nullptr)
        return false;
    SRecordState state;
    for (DWORD column = 0; column < m_wFixColCnt && !state.bEnded; ++column) {
        const DWORD width = m_pFixColLen[column];
        if (state.wOffset + width > m_dwLineSizeLimit)
            return false;
        _ReadColumn(state, width);
        _StoreColumn(state, column);
        ++dwCount;
    }
    const bool result = _FinishRecord(state);
    // A record that ends with the fill's last byte makes the refill now, so that HasNextLineData is exact.
    HasNextRecordByte();
    ppData = m_ppFieldData.get();
    pLen = m_pFieldLen.get();
    return result;
}

void CFixDataAccess::_ReadColumn(SRecordState& state, DWORD dwWidth) {
    char* const column = m_pLineBuff.get() + state.wOffset;
    state.wLength = 0;
    state.wTrailing = 0;
    bool atStart = true;
    for (DWORD taken = 0; HasNextRecordByte() && taken < dwWidth; ++taken) {
        const char c = GetSrcDataWord();
        const auto byte = static_cast<unsigned char>(c);
        AddReadBuffPos();
        if (byte > SCDataAccessDefine::SPACE_CODE) {
            column[state.wLength++] = c;
            state.wTrailing = 0;
            atStart = false;
        } else if (IsPreDelimiter(byte)) {
            if (TakePostDelimiter()) {
                state.bEnded = true;
                return;
            }
        } else if (c == SCDataAccessDefine::SUB_CODE) {
            HasNextRecordByte();
            state.bEnded = true;
            return;
        } else if (!atStart && c == SCDataAccessDefine::SPACE_CODE) {
            column[state.wLength++] = c;
            ++state.wTrailing;
        } else if (!atStart && c == SCDataAccessDefine::TAB_CODE) {
            column[state.wLength++] = SCDataAccessDefine::SPACE_CODE;
            state.wTrailing = 0;
        }
    }
}

void CFixDataAccess::_StoreColumn(SRecordState& state, DWORD dwColumn) {
    if (dwColumn >= m_dwFieldCntLimit)
        return;
    char* field = m_pLineBuff.get() + state.wOffset;
    const std::size_t length =
        HandOutField(dwColumn, field, std::size_t{state.wLength} - state.wTrailing, m_dwFieldSizeLimit);
    state.wOffset = static_cast<WORD>(state.wOffset + length + 1);
    state.bStored = true;
}

/// Passes over what is left of the line, where records have line ends, and tells whether the record is whole.
bool CFixDataAccess::_FinishRecord(const SRecordState& state) {
    if (!state.bStored)
        return !HasNextLineData();
    if (m_bIsExistFixCRLF == 0 || state.bEnded)
        return true;
    return SkipPastLineEnd() || !HasNextLineData();
}

} // namespace NSTQ::NSTQCore
