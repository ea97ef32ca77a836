#include "CCsvOutPut.h"

#include "common/SCFilePath.h"
#include "platform/files/Files.h"
#include "scan/Kernel.h"

#include <algorithm>
#include <cstring>

namespace NSTQ::NSTQCore {

using namespace NSTQ::Platform;

namespace {

constexpr DWORD LINE_END_SIZE = 2;

} // namespace

CCsvOutPut::CCsvOutPut() {
    GetArea();
}

CCsvOutPut::~CCsvOutPut() {
    FileClose();
    FreeArea();
}

void CCsvOutPut::GetArea() {
    m_pWriteBuff = std::make_unique<char[]>(SCDataAccessDefine::WRITE_BUFF_SIZE + 1);
}

void CCsvOutPut::FreeArea() {
    m_pWriteBuff.reset();
}

bool CCsvOutPut::FileOpen(const char* pPath) {
    if (!SCFilePath::IsAbsolutePath(pPath)) {
        m_dwErrorCode = ERROR_PATH_NOT_FOUND;
        return false;
    }
    if (!SCFilePath::CanUseFileName(pPath))
        return false;
    FileClose();
    m_dwWriteSize = 0;
    const HANDLE file =
        CreateFileA(pPath, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        SetCsvDataAccessErrorCode();
        return false;
    }
    m_hFile = file;
    return true;
}

bool CCsvOutPut::FileClose() {
    if (m_hFile != nullptr) {
        WriteBuffer();
        if (!CloseHandle(m_hFile))
            SetCsvDataAccessErrorCode();
        m_hFile = nullptr;
    }
    return true;
}

bool CCsvOutPut::WriteLineData(char** ppData, const WORD* pLen, DWORD dwCount) {
    return WriteRow(ppData, pLen, dwCount);
}

bool CCsvOutPut::WriteRow(const char* const* ppData, const WORD* pLen, DWORD dwCount) {
    for (DWORD field = 0; (field = WriteFields(ppData, pLen, field, dwCount)) < dwCount; ++field) {
        if (field > 0 && !CopyWriteBuff(&m_cSeparator, 1))
            return false;
        if (!WriteField(ppData[field], pLen[field]))
            return false;
    }
    return WriteCRLF();
}

/// Writes the fields from number `dwField` that a kernel can put into the buffer; returns the number of the next one.
DWORD CCsvOutPut::WriteFields(const char* const* ppData, const WORD* pLen, DWORD dwField, DWORD dwCount) {
    const Scan::SKernel& kernel = Scan::GetKernel();
    const auto pre = static_cast<unsigned char>(m_cPreDelimiter);
    if (kernel.writeFields == nullptr || (m_bQuoteLineEnds && pre >= SCDataAccessDefine::SPACE_CODE))
        return dwField;
    char* const buffer = m_pWriteBuff.get();
    Scan::SRow row{.data = ppData,
                   .lengths = pLen,
                   .fieldCount = dwCount,
                   .field = dwField,
                   .out = buffer + m_dwWriteSize,
                   .end = buffer + SCDataAccessDefine::WRITE_BUFF_SIZE,
                   .separator = static_cast<unsigned char>(m_cSeparator),
                   .quotesLineEnds = m_bQuoteLineEnds,
                   .pre = pre};
    kernel.writeFields(row);
    m_dwWriteSize = static_cast<DWORD>(row.out - buffer);
    return row.field;
}

bool CCsvOutPut::WriteField(const char* pField, WORD wLength) {
    constexpr char quote = SCDataAccessDefine::DOUBLE_QUOTATION;
    const auto has = [=](char c) { return wLength > 0 && std::memchr(pField, c, wLength) != nullptr; };
    const bool hasQuote = has(quote);
    const bool hasLineEnd = m_bQuoteLineEnds && (has(SCDataAccessDefine::CR_CODE) ||
                                                 has(SCDataAccessDefine::LF_CODE) || has(m_cPreDelimiter));
    if (!hasQuote && !hasLineEnd && !has(m_cSeparator))
        return CopyWriteBuff(pField, wLength);
    return CopyWriteBuff(&quote, 1) && (hasQuote ? WriteDoubled(pField, wLength) : CopyWriteBuff(pField, wLength)) &&
           CopyWriteBuff(&quote, 1);
}

/// Copies a field with its quotes doubled. All of it is put into the buffer, also after a failed write.
bool CCsvOutPut::WriteDoubled(const char* pField, WORD wLength) {
    constexpr char quote = SCDataAccessDefine::DOUBLE_QUOTATION;
    const char* const end = pField + wLength;
    bool written = true;
    for (const char* piece = pField; piece < end;) {
        const char* next = std::find(piece, end, quote);
        written &= CopySplit(piece, static_cast<DWORD>(next - piece));
        if (next < end) {
            constexpr char doubled[] = {quote, quote};
            written &= CopySplit(doubled, sizeof doubled);
            ++next;
        }
        piece = next;
    }
    return written;
}

/// Appends bytes that may be split between two writes anywhere.
bool CCsvOutPut::CopySplit(const char* pData, DWORD dwLength) {
    bool written = true;
    while (dwLength > 0) {
        if (m_dwWriteSize >= SCDataAccessDefine::WRITE_BUFF_SIZE)
            written &= WriteBuffer();
        const DWORD size = std::min(dwLength, SCDataAccessDefine::WRITE_BUFF_SIZE - m_dwWriteSize);
        std::memcpy(m_pWriteBuff.get() + m_dwWriteSize, pData, size);
        m_dwWriteSize += size;
        pData += size;
        dwLength -= size;
    }
    return written;
}

bool CCsvOutPut::WriteHeaderData(const char* pHeader, WORD wLength) {
    const bool written = CopyWriteBuff(pHeader, wLength);
    WriteCRLF();
    return written && wLength + LINE_END_SIZE <= SCDataAccessDefine::WRITE_BUFF_SIZE;
}

bool CCsvOutPut::WriteCRLF() {
    if (m_dwWriteSize + LINE_END_SIZE > SCDataAccessDefine::WRITE_BUFF_SIZE)
        WriteBuffer();
    m_pWriteBuff[m_dwWriteSize++] = m_cPreDelimiter;
    if (m_cPostDelimiter != 0)
        m_pWriteBuff[m_dwWriteSize++] = m_cPostDelimiter;
    return true;
}

/// Appends bytes in one piece, flushing first if they would not fit. They are appended even if that fails.
bool CCsvOutPut::CopyWriteBuff(const char* pData, WORD wLength) {
    bool written = true;
    if (m_dwWriteSize + wLength > SCDataAccessDefine::WRITE_BUFF_SIZE)
        written = WriteBuffer();
    if (wLength > SCDataAccessDefine::WRITE_BUFF_SIZE)
        return WriteToFile(pData, wLength) && written;
    if (wLength > 0)
        std::memcpy(m_pWriteBuff.get() + m_dwWriteSize, pData, wLength);
    m_dwWriteSize += wLength;
    return written;
}

bool CCsvOutPut::WriteBuffer() {
    const bool written = WriteToFile(m_pWriteBuff.get(), m_dwWriteSize);
    m_dwWriteSize = 0;
    return written;
}

bool CCsvOutPut::WriteToFile(const char* pData, DWORD dwLength) {
    DWORD written = 0;
    if (WriteFile(m_hFile, pData, dwLength, &written, nullptr))
        return true;
    SetCsvDataAccessErrorCode();
    return false;
}

void CCsvOutPut::SetCsvDataAccessErrorCode() {
    m_dwErrorCode = GetLastError();
}

void CCsvOutPut::SetSeparator(char cSeparator) {
    m_cSeparator = cSeparator;
}

void CCsvOutPut::SetDelimiter(char cPre, char cPost) {
    m_cPreDelimiter = cPre;
    m_cPostDelimiter = cPost;
}

void CCsvOutPut::SetQuoteLineEnds(bool bQuote) {
    m_bQuoteLineEnds = bQuote;
}

DWORD CCsvOutPut::GetErrorCode() {
    return m_dwErrorCode;
}

} // namespace NSTQ::NSTQCore
