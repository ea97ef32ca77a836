#include "CCsvDataAccess.h"

#include "platform/codepage/Transcode.h"
#include "platform/files/Files.h"
#include "scan/Kernel.h"
#include "text/CRecordCollector.h"
#include "text/CRecordScan.h"
#include "tqcAccess/CodePage.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace NSTQ::NSTQCore {
namespace {

/// Value of m_dwRecordStartPos: a piece of the raw record did not fit, so that the record cannot be returned.
constexpr DWORD RAW_RECORD_LOST = 0xFFFFFFFF;

/// Value of m_llClosingQuote that no quote directly follows.
constexpr LONGLONG NO_QUOTE = -2;

} // namespace

CCsvDataAccess::CCsvDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize)
    : CCsvDataAccess(dwMaxFieldCnt, dwMaxLineSize, dwMaxFieldSize, false) {}

CCsvDataAccess::CCsvDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize, bool bQuoteNewLine)
    : VCTextFileOperater(dwMaxFieldCnt, dwMaxLineSize, dwMaxFieldSize), m_dwFieldSizeLimit(dwMaxFieldSize),
      m_dwLineSizeLimit(std::min(dwMaxLineSize, DWORD{LINE_SIZE_MAX})), m_dwFieldCntLimit(dwMaxFieldCnt) {
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

bool CCsvDataAccess::FileOpen(const CSourceDataInfo* pInfo) {
    m_bKeepLineEnds = pInfo != nullptr && pInfo->GetKeepLineEnds();
    m_llOpenQuote = -1;
    return VCTextFileOperater::FileOpen(pInfo);
}

LONGLONG CCsvDataAccess::GetOpenQuotePosition() const {
    return m_llOpenQuote;
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

DWORD CCsvDataAccess::CopyPlainRecords(const SForm& form, DWORD dwMaxCount, char* pText, DWORD& dwSize) {
    const DWORD room = std::exchange(dwSize, 0);
    const Scan::SKernel& kernel = Scan::GetKernel();
    Scan::SRecords records{.next = m_pReadBuff.get() + m_dwReadBuffPos,
                           .end = m_pReadBuff.get() + m_dwReadSize,
                           .out = pText,
                           .outEnd = pText + room,
                           .maxCount = dwMaxCount,
                           .count = 0,
                           .separator = static_cast<unsigned char>(m_cSeparator),
                           .pre = static_cast<unsigned char>(m_cPreDelimiter),
                           .post = static_cast<unsigned char>(m_cPostDelimiter),
                           .outSeparator = static_cast<unsigned char>(form.cSeparator),
                           .outPre = static_cast<unsigned char>(form.cPreDelimiter),
                           .outPost = static_cast<unsigned char>(form.cPostDelimiter)};
    // A record in memory is then within each limit.
    const DWORD limit = std::min({m_dwLineSizeLimit, m_dwFieldSizeLimit, m_dwFieldCntLimit});
    if (kernel.copyRecords == nullptr || m_eCharSet != CSourceDataInfo::RCS_ANSI ||
        limit < SCDataAccessDefine::READ_BUFF_SIZE || records.outPre >= SCDataAccessDefine::SPACE_CODE ||
        !Scan::AreOrdinary(records.separator, records.pre, records.post))
        return 0;
    kernel.copyRecords(records);
    SetReadPosition(records.next);
    if (records.count > 0) {
        InitialErrorCode();
        m_llOpenQuote = -1;
    }
    dwSize = static_cast<DWORD>(records.out - pText);
    return records.count;
}

bool CCsvDataAccess::_GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount, bool bKeepRecord,
                                  const char*& pRecord, DWORD& dwRecordSize) {
    _StartRecord(bKeepRecord);
    DWORD fields = 0;
    CRecordScan scan(*this);
    bool complete = true;
    while (complete && !scan.IsEnded()) {
        complete = scan.HasNext();
        if (!complete)
            break;
        fields = scan.ReadOrdinaryFields(fields);
        if (scan.IsEnded())
            break;
        complete = scan.ReadField();
        if (!complete)
            break;
        if (scan.IsOverLimit()) {
            scan.Leave();
            dwCount = fields;
            return false;
        }
        scan.EndField(fields++);
    }
    scan.Leave();
    dwCount = fields;
    // Only for an incomplete record it matters whether the file ends with it.
    const bool isWhole = complete || (!HasNextLineData() && m_dwErrorCode != Platform::ERROR_HANDLE_EOF);
    return _FinishRecord(isWhole, ppData, pLen, pRecord, dwRecordSize);
}

void CCsvDataAccess::_StartRecord(bool bKeepRecord) {
    InitialErrorCode();
    m_llOpenQuote = -1;
    m_bKeepRecord = bKeepRecord;
    m_dwRecordStartPos = m_dwReadBuffPos;
    m_dwRecordSize = 0;
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

/// Collects the bytes of the raw record in the current fill, before a refill and at the end of the record.
bool CCsvDataAccess::OnReread() {
    if (m_bFollowQuotes)
        _FollowQuotes();
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

/// The record is collected in the line buffer itself, which has exactly the capacity for a record of the maximum size
/// before its conversion; in every page except UTF-8 the converted text is never longer.
bool CCsvDataAccess::_GetLineDataWithConvert(const char**& ppData, const WORD*& pLen, DWORD& dwCount,
                                             bool bKeepRecord, const char*& pRecord, DWORD& dwRecordSize) {
    _StartRecord(bKeepRecord);
    auto* text = reinterpret_cast<unsigned char*>(m_pLineBuff.get());
    DWORD size = m_dwLineSizeLimit + 1;
    DWORD converted = 0;
    DWORD fields = 0;
    if (!_GetRecordData(text, &size, converted, fields))
        return false;
    const bool isConverted = converted == size;
    const std::size_t result = isConverted ? size : _ConvertRecord(text, size, converted);
    const bool fits = result <= m_dwLineSizeLimit;
    dwCount = fits && isConverted ? fields : 0;
    if (fits && dwCount == 0)
        _SplitRecord(result, dwCount);
    return _FinishRecord(true, ppData, pLen, pRecord, dwRecordSize);
}

/// `dwConverted` bytes of the record are in the ANSI code page already. If these are all, the record may already be
/// split into `dwFields` fields, which is 0 otherwise.
bool CCsvDataAccess::_GetRecordData(unsigned char* pBuff, DWORD* pdwSize, DWORD& dwConverted, DWORD& dwFields) {
    m_bFollowQuotes = true;
    m_bInQuotes = false;
    m_dwFollowed = m_dwReadBuffPos;
    m_llClosingQuote = NO_QUOTE;
    CRecordCollector collector(*this, pBuff, *pdwSize);
    const bool fits = collector.Collect();
    m_bFollowQuotes = false;
    if (collector.IsQuoteOpen()) {
        _FollowQuotes();
        m_llOpenQuote = m_llOpeningQuote;
    }
    if (!fits)
        return false;
    dwFields = collector.Finish();
    *pdwSize = collector.GetSize();
    dwConverted = collector.CountConverted();
    return true;
}

/// Follows the quotes of the record up to the read position, at the end of a fill and when one is left open, so that
/// the code that takes the bytes need not remember their positions.
void CCsvDataAccess::_FollowQuotes() {
    const unsigned char* const fill = m_pReadBuff.get();
    const unsigned char* const end = fill + m_dwReadBuffPos;
    constexpr unsigned char quote = SCDataAccessDefine::DOUBLE_QUOTATION;
    const auto find = [&](const unsigned char* from) {
        const auto size = static_cast<std::size_t>(end - from);
        return size == 0 ? nullptr : static_cast<const unsigned char*>(std::memchr(from, quote, size));
    };
    for (const unsigned char* at = find(fill + m_dwFollowed); at != nullptr; at = find(at + 1)) {
        const LONGLONG offset = m_llReadOffset + (at - fill);
        if (m_bInQuotes)
            m_llClosingQuote = offset;
        else if (offset != m_llClosingQuote + 1) // not the second one of a doubled quote
            m_llOpeningQuote = offset;
        m_bInQuotes = !m_bInQuotes;
    }
    m_dwFollowed = 0;
}

/// Converts the rest of a collected record in place to the ANSI code page. Returns its new length, which is above the
/// line limit when the converted text does not fit; the content of the line buffer is then undefined.
std::size_t CCsvDataAccess::_ConvertRecord(unsigned char* pText, std::size_t size, std::size_t converted) const {
    if (Platform::GetAnsiCodePage() != Platform::CP_UTF8)
        return converted + Platform::ConvertUtf8ToAnsi(pText + converted, size - converted);
    // The length does not show it: three invalid bytes can be replaced by the three of U+FFFD.
    if (Platform::CountValidUtf8(reinterpret_cast<const char*>(pText), size) == size)
        return size;
    const std::size_t mended = Platform::MendUtf8(pText, size, nullptr, 0);
    if (mended > m_dwLineSizeLimit)
        return mended;
    // Replacing only lengthens the text, so the record is moved to the end of the buffer and read from there.
    unsigned char* tail = pText + (std::size_t{m_dwLineSizeLimit} + 1 - size);
    std::memmove(tail, pText, size);
    return Platform::MendUtf8(tail, size, pText, mended);
}

void CCsvDataAccess::_SplitRecord(std::size_t size, DWORD& dwCount) {
    char* field = m_pLineBuff.get();
    char* const end = field + size;
    const Scan::SKernel& kernel = Scan::GetKernel();
    // A record that is not longer than the field limit has no field to truncate.
    if (kernel.splitTexts != nullptr && size <= m_dwFieldSizeLimit) {
        Scan::STexts texts{.text = field,
                           .end = end,
                           .data = m_ppFieldData.get(),
                           .lengths = m_pFieldLen.get(),
                           .entryCount = m_dwFieldCntLimit,
                           .textCount = 0};
        kernel.splitTexts(texts);
        field = texts.text;
        dwCount = texts.textCount;
    }
    for (; field < end && dwCount < m_dwFieldCntLimit; ++dwCount) {
        const auto length = static_cast<DWORD>(std::strlen(field));
        m_ppFieldData[dwCount] = field;
        m_pFieldLen[dwCount] = static_cast<WORD>(FinishField(field, length, m_dwFieldSizeLimit));
        field += length + 1;
    }
}

} // namespace NSTQ::NSTQCore
