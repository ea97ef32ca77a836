#include "CCsvDataAccess.h"

#include "platform/CodePage.h"
#include "platform/codepage/Transcode.h"

#include <algorithm>
#include <cstring>

namespace NSTQ::NSTQCore {
namespace {

/// Lengths and offsets in the line buffer have 16 bits.
constexpr DWORD LINE_SIZE_MAX = 65535;

/// As m_dwRecordStartPos: a piece of the raw record did not fit, so that the record cannot be handed out.
constexpr DWORD RAW_RECORD_LOST = 0xFFFFFFFF;

} // namespace

/// Where the reading of one record stands.
struct CCsvDataAccess::SRecordState {
    DWORD dwCounter = 0; ///< bytes taken and field ends, held against the line limit
    WORD wOffset = 0;    ///< where the field in hand begins in the line buffer
    WORD wLength = 0;    ///< bytes of the field in hand
    WORD wTrailing = 0;  ///< how many of them are spaces at its end
    bool bEnded = false; ///< the record's line end has been met
};

CCsvDataAccess::CCsvDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize)
    : CCsvDataAccess(dwMaxFieldCnt, dwMaxLineSize, dwMaxFieldSize, false) {}

CCsvDataAccess::CCsvDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize, bool bQuoteNewLine)
    : VCTextFileOperater(dwMaxFieldCnt, dwMaxLineSize, dwMaxFieldSize), m_dwFieldSizeLimit(dwMaxFieldSize),
      m_dwLineSizeLimit(std::min(dwMaxLineSize, LINE_SIZE_MAX)), m_dwFieldCntLimit(dwMaxFieldCnt) {
    _Initial(dwMaxLineSize, bQuoteNewLine);
}

CCsvDataAccess::CCsvDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize, bool bQuoteNewLine,
                               CSourceDataInfo::EReadCharSet eCharSet)
    : CCsvDataAccess(dwMaxFieldCnt, dwMaxLineSize, dwMaxFieldSize, bQuoteNewLine) {
    m_eCharSet = eCharSet;
}

CCsvDataAccess::~CCsvDataAccess() = default;

void CCsvDataAccess::_Initial(DWORD dwSize, bool bQuoteNewLine) {
    m_pRecordData = std::make_unique_for_overwrite<char[]>(dwSize);
    m_dwRecordSize = 0;
    m_bKeepRecord = false;
    m_dwRecordStartPos = 0;
    m_bQuoteNewLine = bQuoteNewLine;
}

bool CCsvDataAccess::GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount) {
    const char* record = nullptr;
    DWORD recordSize = 0;
    return m_eCharSet == CSourceDataInfo::RCS_ANSI
               ? _GetLineData(ppData, pLen, dwCount, false, record, recordSize)
               : _GetLineDataWithConvert(ppData, pLen, dwCount, false, record, recordSize);
}

bool CCsvDataAccess::GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount, const char*& pRecord,
                                 DWORD& dwRecordSize) {
    if (m_eCharSet == CSourceDataInfo::RCS_ANSI)
        return _GetLineData(ppData, pLen, dwCount, true, pRecord, dwRecordSize);
    return _GetLineDataWithConvert(ppData, pLen, dwCount, false, pRecord, dwRecordSize);
}

bool CCsvDataAccess::_GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount, bool bKeepRecord,
                                  const char*& pRecord, DWORD& dwRecordSize) {
    _StartRecord(bKeepRecord);
    dwCount = 0;
    SRecordState state;
    while (!state.bEnded) {
        if (!HasNextRecordByte() || !_ReadField(state))
            return _FinishRecord(!HasNextLineData(), ppData, pLen, pRecord, dwRecordSize);
        if (state.dwCounter > m_dwLineSizeLimit)
            return false;
        _StoreField(state, dwCount);
        if (!state.bEnded && _IsNextByte(m_cSeparator))
            AddReadBuffPos();
        ++dwCount;
        ++state.dwCounter;
    }
    return _FinishRecord(true, ppData, pLen, pRecord, dwRecordSize);
}

void CCsvDataAccess::_StartRecord(bool bKeepRecord) {
    InitialErrorCode();
    m_bKeepRecord = bKeepRecord;
    if (bKeepRecord) {
        m_dwRecordStartPos = m_dwReadBuffPos;
        m_dwRecordSize = 0;
    }
}

bool CCsvDataAccess::_FinishRecord(bool bResult, const char**& ppData, const WORD*& pLen, const char*& pRecord,
                                   DWORD& dwRecordSize) {
    if (m_bKeepRecord) {
        bResult = OnReread();
        m_bKeepRecord = false;
    }
    ppData = m_ppFieldData.get();
    pLen = m_pFieldLen.get();
    pRecord = m_pRecordData.get();
    dwRecordSize = m_dwRecordSize;
    return bResult;
}

/// Reads one field into the line buffer. False when an end-of-file mark stands in its place.
bool CCsvDataAccess::_ReadField(SRecordState& state) {
    state.wLength = 0;
    state.wTrailing = 0;
    _SkipLeadingBlanks(state);
    if (state.bEnded)
        return true;
    if (_IsNextByte(SCDataAccessDefine::SUB_CODE)) {
        AddReadBuffPos();
        HasNextSrcData();
        return false;
    }
    if (_IsNextByte(SCDataAccessDefine::DOUBLE_QUOTATION))
        _ReadQuotedPart(state);
    if (!state.bEnded)
        _ReadUnquotedPart(state);
    return true;
}

void CCsvDataAccess::_SkipLeadingBlanks(SRecordState& state) {
    bool needsMore = false;
    while (HasNextRecordByte() && state.dwCounter < m_dwLineSizeLimit) {
        const char c = GetSrcDataWord();
        const auto byte = static_cast<unsigned char>(c);
        if (byte > SCDataAccessDefine::SPACE_CODE || c == m_cSeparator)
            return;
        if (IsPreDelimiter(byte)) {
            AddReadBuffPos();
            if (_IsEndofRecord(byte, &needsMore)) {
                state.bEnded = true;
                return;
            }
        } else if (c == SCDataAccessDefine::TAB_CODE || c == SCDataAccessDefine::SUB_CODE) {
            return;
        } else {
            AddReadBuffPos();
        }
        ++state.dwCounter;
    }
}

/// From an opening quote up to its closing quote, the record's line end, the end of the data or the limit.
void CCsvDataAccess::_ReadQuotedPart(SRecordState& state) {
    AddReadBuffPos();
    bool atStart = true;
    bool needsMore = false;
    while (HasNextRecordByte() && state.dwCounter < m_dwLineSizeLimit) {
        const char c = GetSrcDataWord();
        const auto byte = static_cast<unsigned char>(c);
        if (byte > SCDataAccessDefine::SPACE_CODE && c != SCDataAccessDefine::DOUBLE_QUOTATION) {
            _StoreRun(state, SCDataAccessDefine::DOUBLE_QUOTATION);
            atStart = false;
            continue;
        }
        AddReadBuffPos();
        if (c == SCDataAccessDefine::SPACE_CODE) {
            if (!atStart) {
                _StoreByte(state, c);
                ++state.wTrailing;
            }
        } else if (c == SCDataAccessDefine::DOUBLE_QUOTATION) {
            if (!_IsNextByte(c))
                return;
            AddReadBuffPos();
            _StoreByte(state, c);
            state.wTrailing = 0;
            atStart = false;
        } else if (c == SCDataAccessDefine::TAB_CODE) {
            _StoreByte(state, SCDataAccessDefine::SPACE_CODE);
            state.wTrailing = 0;
            atStart = false;
        } else if (!m_bQuoteNewLine && _IsEndofRecord(byte, &needsMore)) {
            state.bEnded = true;
            return;
        }
        ++state.dwCounter;
    }
}

/// A field without an opening quote, or what follows a closing one.
void CCsvDataAccess::_ReadUnquotedPart(SRecordState& state) {
    bool needsMore = false;
    while (HasNextRecordByte()) {
        const char c = GetSrcDataWord();
        const auto byte = static_cast<unsigned char>(c);
        if (c == m_cSeparator || state.dwCounter >= m_dwLineSizeLimit)
            return;
        if (byte > SCDataAccessDefine::SPACE_CODE) {
            _StoreRun(state, m_cSeparator);
            continue;
        }
        AddReadBuffPos();
        if (IsPreDelimiter(byte)) {
            if (_IsEndofRecord(byte, &needsMore)) {
                state.bEnded = true;
                return;
            }
        } else if (c == SCDataAccessDefine::SPACE_CODE) {
            _StoreByte(state, c);
            ++state.wTrailing;
        } else if (c == SCDataAccessDefine::TAB_CODE) {
            _StoreByte(state, SCDataAccessDefine::SPACE_CODE);
            state.wTrailing = 0;
        } else if (c == SCDataAccessDefine::SUB_CODE) {
            HasNextSrcData();
            state.bEnded = true;
            return;
        }
        ++state.dwCounter;
    }
}

/// Stores the bytes above the space that follow, as far as the fill and the limit reach and up to `cStop`.
void CCsvDataAccess::_StoreRun(SRecordState& state, char cStop) {
    const unsigned char* source = m_pReadBuff.get() + m_dwReadBuffPos;
    const DWORD room = std::min(m_dwReadSize - m_dwReadBuffPos, m_dwLineSizeLimit - state.dwCounter);
    const auto stop = static_cast<unsigned char>(cStop);
    char* target = m_pLineBuff.get() + state.wOffset + state.wLength;
    DWORD count = 0;
    for (; count < room && source[count] > SCDataAccessDefine::SPACE_CODE && source[count] != stop; ++count)
        target[count] = static_cast<char>(source[count]);
    m_dwReadBuffPos += count;
    state.dwCounter += count;
    state.wLength = static_cast<WORD>(state.wLength + count);
    state.wTrailing = 0;
}

void CCsvDataAccess::_StoreByte(SRecordState& state, char c) {
    m_pLineBuff[std::size_t{state.wOffset} + state.wLength] = c;
    ++state.wLength;
}

void CCsvDataAccess::_StoreField(SRecordState& state, DWORD dwField) {
    if (dwField >= m_dwFieldCntLimit)
        return;
    char* field = m_pLineBuff.get() + state.wOffset;
    const std::size_t length =
        HandOutField(dwField, field, std::size_t{state.wLength} - state.wTrailing, m_dwFieldSizeLimit);
    state.wOffset = static_cast<WORD>(state.wOffset + length + 1);
}

bool CCsvDataAccess::_IsNextByte(char c) {
    return HasNextRecordByte() && GetSrcDataWord() == c;
}

/// Whether `c`, which has been consumed, ends the record; a second byte of the line end is consumed too.
/// `*pbNeedMore` tells that the data ended where that byte could have been.
bool CCsvDataAccess::_IsEndofRecord(unsigned char c, bool* pbNeedMore) {
    *pbNeedMore = false;
    if (!IsPreDelimiter(c))
        return false;
    if (TakePostDelimiter())
        return true;
    *pbNeedMore = m_dwReadBuffPos == m_dwReadSize;
    return false;
}

/// Collects the raw record's bytes of the current fill, before a refill and at the record's end.
bool CCsvDataAccess::OnReread() {
    if (!m_bKeepRecord)
        return true;
    const DWORD size = m_dwReadBuffPos - m_dwRecordStartPos;
    if (m_dwRecordStartPos == RAW_RECORD_LOST ||
        !CopyReadBuffData(m_pRecordData.get() + m_dwRecordSize, m_dwLineSizeLimit - m_dwRecordSize,
                          m_dwRecordStartPos, size)) {
        m_dwRecordStartPos = RAW_RECORD_LOST;
        return false;
    }
    m_dwRecordSize += size;
    m_dwRecordStartPos = 0;
    return true;
}

/// The record is collected where its fields will stand: the line buffer has exactly the capacity that a record may
/// have before its conversion, and in every page but UTF-8 the converted text is never longer.
bool CCsvDataAccess::_GetLineDataWithConvert(const char**& ppData, const WORD*& pLen, DWORD& dwCount,
                                             bool bKeepRecord, const char*& pRecord, DWORD& dwRecordSize) {
    _StartRecord(bKeepRecord);
    auto* text = reinterpret_cast<unsigned char*>(m_pLineBuff.get());
    DWORD size = m_dwLineSizeLimit + 1;
    if (!_GetRecordData(text, &size))
        return false;
    dwCount = 0;
    const std::size_t converted = _ConvertRecord(text, size);
    if (converted <= m_dwLineSizeLimit)
        _SplitRecord(converted, dwCount);
    return _FinishRecord(true, ppData, pLen, pRecord, dwRecordSize);
}

/// How the collecting of one record stands.
struct CCsvDataAccess::SCollectState {
    unsigned char* pBuff;
    DWORD dwCapacity; ///< with the final NUL
    DWORD dwSize = 0;
    bool bQuoted = false;
    bool bDone = false;

    bool Collect(unsigned char c) {
        if (dwSize + 1 >= dwCapacity)
            return false;
        pBuff[dwSize++] = c;
        return true;
    }
};

/// Collects the next record, its syntax resolved: the fields one after another, each with its NUL.
bool CCsvDataAccess::_GetRecordData(unsigned char* pBuff, DWORD* pdwSize) {
    SCollectState state{pBuff, *pdwSize};
    while (!state.bDone && HasNextRecordByte()) {
        _CollectRun(state);
        if (HasNextRecordByte() && !_CollectNext(state))
            return false;
        // A record that ends with the fill's last byte makes the refill now, so that HasNextLineData is exact.
        if (state.bDone)
            HasNextRecordByte();
    }
    if (state.dwSize > 0)
        pBuff[state.dwSize++] = SCDataAccessDefine::NULL_CODE;
    *pdwSize = state.dwSize;
    return true;
}

/// Collects the ordinary bytes that follow, as far as the fill and the capacity reach.
void CCsvDataAccess::_CollectRun(SCollectState& state) {
    const unsigned char* source = m_pReadBuff.get() + m_dwReadBuffPos;
    const DWORD room = std::min(m_dwReadSize - m_dwReadBuffPos, state.dwCapacity - 1 - state.dwSize);
    const auto quote = static_cast<unsigned char>(SCDataAccessDefine::DOUBLE_QUOTATION);
    const unsigned char lowest = state.bQuoted ? 0x20 : 0x21;
    const unsigned char separator = state.bQuoted ? quote : static_cast<unsigned char>(m_cSeparator);
    const auto pre = static_cast<unsigned char>(m_cPreDelimiter);
    unsigned char* target = state.pBuff + state.dwSize;
    DWORD count = 0;
    for (; count < room; ++count) {
        const unsigned char c = source[count];
        if (c < lowest || c == quote || c == separator || c == pre)
            break;
        target[count] = c;
    }
    m_dwReadBuffPos += count;
    state.dwSize += count;
}

/// Takes one byte. False when it has to be collected and does not fit.
bool CCsvDataAccess::_CollectNext(SCollectState& state) {
    const char c = GetSrcDataWord();
    const auto byte = static_cast<unsigned char>(c);
    AddReadBuffPos();
    bool needsMore = false;
    if (_IsEndofRecord(byte, &needsMore)) {
        state.bDone = !(state.bQuoted && m_bQuoteNewLine);
        return true;
    }
    if (c == m_cSeparator && !state.bQuoted)
        return state.Collect(SCDataAccessDefine::NULL_CODE);
    if (byte < SCDataAccessDefine::SPACE_CODE) {
        state.bDone = c == SCDataAccessDefine::SUB_CODE && state.dwSize > 0;
        return true;
    }
    if (c == SCDataAccessDefine::DOUBLE_QUOTATION) {
        const bool isDoubled = state.bQuoted && _IsNextByte(c);
        if (isDoubled) {
            AddReadBuffPos();
            return state.Collect(byte);
        }
        state.bQuoted = !state.bQuoted;
        return true;
    }
    if (c == SCDataAccessDefine::SPACE_CODE && !state.bQuoted)
        return true;
    return state.Collect(byte);
}

/// Converts a collected record in place to the ANSI code page. Returns its new length, which is above the line limit
/// when the converted text does not fit; the line buffer then holds nothing of use.
std::size_t CCsvDataAccess::_ConvertRecord(unsigned char* pText, std::size_t size) const {
    if (Platform::GetAnsiCodePage() != Platform::CP_UTF8)
        return Platform::ConvertUtf8ToAnsi(pText, size);
    const std::size_t mended = Platform::MendUtf8(pText, size, nullptr, 0);
    if (mended == size || mended > m_dwLineSizeLimit)
        return mended;
    // Mending only lengthens, so that it can run from the end of the buffer down to its start.
    unsigned char* tail = pText + (std::size_t{m_dwLineSizeLimit} + 1 - size);
    std::memmove(tail, pText, size);
    return Platform::MendUtf8(tail, size, pText, mended);
}

void CCsvDataAccess::_SplitRecord(std::size_t size, DWORD& dwCount) {
    char* const end = m_pLineBuff.get() + size;
    for (char* field = m_pLineBuff.get(); field < end && dwCount < m_dwFieldCntLimit; ++dwCount) {
        const std::size_t length = std::strlen(field);
        HandOutField(dwCount, field, length, m_dwFieldSizeLimit);
        field += length + 1;
    }
}

} // namespace NSTQ::NSTQCore
