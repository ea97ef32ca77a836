#include "VCTextFileOperater.h"

#include "platform/files/Files.h"
#include "scan/Kernel.h"

#include <algorithm>
#include <cstring>

namespace NSTQ::NSTQCore {

using namespace NSTQ::Platform;

namespace {

constexpr DWORD markSize = sizeof SCDataAccessDefine::BOM_UTF8;

} // namespace

const DWORD VCTextFileOperater::DW_ERROR_PATH_NOT_FOUND;

VCTextFileOperater::VCTextFileOperater(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize)
    : m_dwMaxFieldSize(dwMaxFieldSize), m_dwMaxLineSize(dwMaxLineSize), m_dwMaxFieldCnt(dwMaxFieldCnt) {
    GetArea();
}

VCTextFileOperater::~VCTextFileOperater() {
    FreeArea();
    FileClose();
}

void VCTextFileOperater::GetArea() {
    m_pReadBuff = std::make_unique<unsigned char[]>(SCDataAccessDefine::READ_BUFF_SIZE + 1);
    m_pLineBuff = std::make_unique<char[]>(std::size_t{m_dwMaxLineSize} + 1 + Scan::readSlack);
    const std::size_t entries = std::size_t{m_dwMaxFieldCnt} + Scan::entrySlack;
    m_ppFieldData = std::make_unique<const char*[]>(entries);
    m_pFieldLen = std::make_unique<WORD[]>(entries);
}

void VCTextFileOperater::FreeArea() {
    m_pReadBuff.reset();
    m_pLineBuff.reset();
    m_ppFieldData.reset();
    m_pFieldLen.reset();
}

bool VCTextFileOperater::FileOpen(const CSourceDataInfo* pInfo) {
    const SStream stream = m_stream;
    FileClose();
    InitialErrorCode();
    m_bStream = stream.bGiven;
    const char* path = nullptr;
    if (pInfo == nullptr || (!m_bStream && !pInfo->GetFilePath(path))) {
        m_dwErrorCode = DW_ERROR_PATH_NOT_FOUND;
        return false;
    }
    m_hFile = m_bStream ? DuplicateDescriptor(stream.iDescriptor)
                        : CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (m_hFile == INVALID_HANDLE_VALUE && !stream.HasEnded()) {
        SetCsvDataAccessErrorCode();
        return false;
    }
    Initialize();
    m_eCharSet = pInfo->GetReadCharSet();
    if (!ReadFirstFill(stream))
        return false;
    DetectCharSet();
    return true;
}

bool VCTextFileOperater::SetStream(int iDescriptor, const char* pHead, DWORD dwHeadSize) {
    if (dwHeadSize > SCDataAccessDefine::READ_BUFF_SIZE)
        return false;
    m_stream = {.bGiven = true, .iDescriptor = iDescriptor, .pHead = pHead, .dwHeadSize = dwHeadSize};
    return true;
}

bool VCTextFileOperater::TakeFileSize(const SStream& stream) {
    LARGE_INTEGER size{.QuadPart = stream.HasEnded() ? LONGLONG{stream.dwHeadSize} : SIZE_UNKNOWN};
    if (!m_bStream && !GetFileSizeEx(m_hFile, &size)) {
        SetCsvDataAccessErrorCode();
        return false;
    }
    m_llFileSize = size.QuadPart;
    return true;
}

bool VCTextFileOperater::ReadFirstFill(const SStream& stream) {
    if (!TakeFileSize(stream))
        return false;
    std::copy_n(stream.pHead, stream.dwHeadSize, m_pReadBuff.get());
    m_dwReadSize = stream.dwHeadSize;
    bool read = m_dwReadSize > 0 || ReadFill();
    // The character set is detected in these bytes, also if the system returns fewer at first.
    if (read && m_llFileSize > m_dwReadSize && m_dwReadSize <= markSize && m_eCharSet != CSourceDataInfo::RCS_ANSI) {
        DWORD more = 0;
        read = ReadFileWhole(m_hFile, m_pReadBuff.get() + m_dwReadSize, markSize + 1 - m_dwReadSize, &more);
        m_dwReadSize += more;
    }
    if (!read)
        SetCsvDataAccessErrorCode();
    return read;
}

void VCTextFileOperater::DetectCharSet() {
    if (m_eCharSet == CSourceDataInfo::RCS_ANSI || m_dwReadSize <= markSize)
        return;
    const bool hasMark = std::memcmp(m_pReadBuff.get(), SCDataAccessDefine::BOM_UTF8, markSize) == 0;
    if (m_eCharSet == CSourceDataInfo::RCS_AUTO)
        m_eCharSet = hasMark ? CSourceDataInfo::RCS_UTF8 : CSourceDataInfo::RCS_ANSI;
    if (hasMark && m_eCharSet == CSourceDataInfo::RCS_UTF8)
        m_dwReadBuffPos = markSize;
}

bool VCTextFileOperater::HasNextLineData() {
    return m_llReadOffset < m_llFileSize;
}

bool VCTextFileOperater::HasNextSrcData() {
    if (m_dwReadBuffPos < m_dwReadSize)
        return true;
    OnReread();
    m_llReadOffset += m_dwReadSize;
    m_dwReadBuffPos = 0;
    if (!ReadFill()) {
        SetCsvDataAccessErrorCode();
        return false;
    }
    // Another program may have made the file shorter: then the missing bytes would be read again and again.
    if (m_dwReadSize == 0 && m_llReadOffset < m_llFileSize) {
        m_llFileSize = m_llReadOffset;
        m_dwErrorCode = ERROR_HANDLE_EOF;
    }
    return m_dwReadSize != 0;
}

/// At the end of a stream, or where it fails, its size is known; nothing is read after that, which a terminal would
/// allow.
bool VCTextFileOperater::ReadFill() {
    m_dwReadSize = 0;
    if (m_llReadOffset == m_llFileSize && m_bStream)
        return true;
    const bool read =
        ReadFile(m_hFile, m_pReadBuff.get(), SCDataAccessDefine::READ_BUFF_SIZE, &m_dwReadSize, nullptr);
    if (m_bStream && m_dwReadSize == 0)
        m_llFileSize = m_llReadOffset;
    return read;
}

bool VCTextFileOperater::OnReread() {
    return true;
}

bool VCTextFileOperater::MoveFileBegin() {
    return MoveFilePointer(FILE_BEGIN);
}

bool VCTextFileOperater::MoveFileEnd() {
    return MoveFilePointer(FILE_END);
}

bool VCTextFileOperater::MoveFilePointer(DWORD dwMoveMethod) {
    if (m_bStream || !SetFilePointerEx(m_hFile, LARGE_INTEGER{}, nullptr, dwMoveMethod)) {
        m_dwErrorCode = m_bStream ? ERROR_INVALID_FUNCTION : GetLastError();
        return false;
    }
    FileInitialize();
    if (dwMoveMethod == FILE_END)
        m_llReadOffset = m_llFileSize;
    return true;
}

bool VCTextFileOperater::GetSpecificLineData(DWORD dwLine, const char**& ppData, const WORD*& pLen, DWORD& dwCount) {
    InitialErrorCode();
    if (!MoveFileBegin())
        return false;
    for (DWORD line = 0; line < dwLine; ++line)
        if (!SkipPastLineEnd())
            return false;
    return HasNextRecordByte() && GetLineData(ppData, pLen, dwCount);
}

bool VCTextFileOperater::HasNextRecordByte() {
    return m_dwReadBuffPos < m_dwReadSize || (m_dwErrorCode == 0 && HasNextSrcData());
}

VCTextFileOperater::SFill VCTextFileOperater::GetNextFill(const unsigned char* pNext) {
    SetReadPosition(pNext);
    HasNextRecordByte();
    return GetFill();
}

bool VCTextFileOperater::TakePostDelimiter() {
    if (m_cPostDelimiter == 0)
        return true;
    if (!HasNextRecordByte() || !IsPostDelimiter(m_pReadBuff[m_dwReadBuffPos]))
        return false;
    AddReadBuffPos();
    return true;
}

bool VCTextFileOperater::SkipPastLineEnd() {
    while (HasNextRecordByte()) {
        const unsigned char* begin = m_pReadBuff.get() + m_dwReadBuffPos;
        const unsigned char* end = m_pReadBuff.get() + m_dwReadSize;
        const unsigned char* found = std::find_if(begin, end, [this](unsigned char c) { return IsPreDelimiter(c); });
        m_dwReadBuffPos += static_cast<DWORD>(found - begin);
        if (found == end)
            continue;
        AddReadBuffPos();
        if (TakePostDelimiter())
            return true;
    }
    return false;
}

int VCTextFileOperater::GetReadPosition() {
    return m_llFileSize <= 0 || m_llFileSize == SIZE_UNKNOWN ? 0
                                                             : static_cast<int>(m_llReadOffset * 1000 / m_llFileSize);
}

DWORD VCTextFileOperater::GetErrorCode() {
    return m_dwErrorCode;
}

bool VCTextFileOperater::FileClose() {
    Initialize();
    m_stream = {};
    if (m_hFile != nullptr) {
        CloseHandle(m_hFile);
        m_hFile = nullptr;
    }
    return true;
}

void VCTextFileOperater::FileInitialize() {
    m_llReadOffset = 0;
    m_dwReadBuffPos = 0;
    m_dwReadSize = 0;
}

void VCTextFileOperater::Initialize() {
    FileInitialize();
    m_llFileSize = 0;
}

void VCTextFileOperater::SetSeparator(char cSeparator) {
    m_cSeparator = cSeparator;
}

void VCTextFileOperater::SetDelimiter(char cPre, char cPost) {
    m_cPreDelimiter = cPre;
    m_cPostDelimiter = cPost;
}

void VCTextFileOperater::SetCharSet(CSourceDataInfo::EReadCharSet eCharSet) {
    m_eCharSet = eCharSet;
}

CSourceDataInfo::EReadCharSet VCTextFileOperater::GetCharSet() {
    return m_eCharSet;
}

char VCTextFileOperater::GetSrcDataWord() {
    return static_cast<char>(m_pReadBuff[m_dwReadBuffPos]);
}

bool VCTextFileOperater::IsPreNewLine() {
    return HasNextSrcData() && IsPreDelimiter(m_pReadBuff[m_dwReadBuffPos]);
}

bool VCTextFileOperater::IsPostNewLine() {
    if (m_cPostDelimiter == 0)
        return true;
    if (!HasNextSrcData() || !IsPostDelimiter(m_pReadBuff[m_dwReadBuffPos]))
        return false;
    AddReadBuffPos();
    return true;
}

char VCTextFileOperater::GetPreDelimiter() {
    return m_cPreDelimiter;
}

char VCTextFileOperater::GetPostDelimiter() {
    return m_cPostDelimiter;
}

char VCTextFileOperater::GetSeparator() {
    return m_cSeparator;
}

void VCTextFileOperater::AddReadBuffPos() {
    ++m_dwReadBuffPos;
}

DWORD VCTextFileOperater::GetReadBuffPos() const {
    return m_dwReadBuffPos;
}

bool VCTextFileOperater::CopyReadBuffData(char* pDest, DWORD dwDestSize, DWORD dwOffset, DWORD dwLen) const {
    if (dwDestSize < dwLen || dwLen > SCDataAccessDefine::READ_BUFF_SIZE ||
        dwOffset > SCDataAccessDefine::READ_BUFF_SIZE - dwLen)
        return false;
    std::memcpy(pDest, m_pReadBuff.get() + dwOffset, dwLen);
    return true;
}

void VCTextFileOperater::SetCsvDataAccessErrorCode() {
    m_dwErrorCode = GetLastError();
}

void VCTextFileOperater::InitialErrorCode() {
    m_dwErrorCode = 0;
}

} // namespace NSTQ::NSTQCore
