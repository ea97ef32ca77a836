#include "CSourceDataInfo.h"

#include "common/CUnZip.h"
#include "common/SCFilePath.h"
#include "common/SCFolderTree.h"
#include "common/SCTmpDirPath.h"
#include "platform/ado/Provider.h"
#include "platform/automation/WipeMemory.h"
#include "platform/files/CFileHandle.h"
#include "tqcAccess/CodePage.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <string>
#include <utility>

namespace NSTQ::NSTQCore {

using namespace NSTQ::Platform;

namespace {

/// Room for a path or a password of 260 bytes and its NUL.
constexpr std::size_t PATH_BUFFSIZE = MAX_PATH + 1;

std::unique_ptr<char[]> CreateBuffer(std::size_t size) {
    return std::make_unique<char[]>(size);
}

void ClearBuffer(std::unique_ptr<char[]>& buffer) {
    std::memset(buffer.get(), 0, PATH_BUFFSIZE);
}

void CopyBuffer(std::unique_ptr<char[]>& target, const std::unique_ptr<char[]>& source, std::size_t size) {
    std::memcpy(target.get(), source.get(), size);
}

std::unique_ptr<char[]> CloneBuffer(const std::unique_ptr<char[]>& source, std::size_t size) {
    if (!source)
        return nullptr;
    auto clone = CreateBuffer(size + 1);
    CopyBuffer(clone, source, size);
    return clone;
}

} // namespace

CSourceDataInfo::CSourceDataInfo(WORD wReserved, DWORD dwFirstLineScanLimit)
    : m_wReserved(wReserved), m_dwFirstLineScanLimit(dwFirstLineScanLimit), m_pFilePath(CreateBuffer(PATH_BUFFSIZE)),
      m_pXtqfSourceFilePath(CreateBuffer(PATH_BUFFSIZE)), m_pUncompressFolderPath(CreateBuffer(PATH_BUFFSIZE)),
      m_pPassWordString(CreateBuffer(PATH_BUFFSIZE)) {}

CSourceDataInfo::~CSourceDataInfo() {
    try {
        UncompressDeleteDirectory(m_pUncompressFolderPath.get());
    } catch (...) {
        // Not enough memory: what is not removed yet stays, as after any failure of the system.
    }
    Initialize();
}

CSourceDataInfo* CSourceDataInfo::CreateClone() const {
    auto clone = std::make_unique<CSourceDataInfo>(m_wReserved, m_dwFirstLineScanLimit);
    CopyBuffer(clone->m_pFilePath, m_pFilePath, PATH_BUFFSIZE);
    CopyBuffer(clone->m_pXtqfSourceFilePath, m_pXtqfSourceFilePath, PATH_BUFFSIZE);
    CopyBuffer(clone->m_pPassWordString, m_pPassWordString, PATH_BUFFSIZE);
    clone->m_ftUpDateDateTime = m_ftUpDateDateTime;
    clone->m_eSourceFileType = m_eSourceFileType;
    clone->m_dwErrorCode = m_dwErrorCode;
    clone->m_cPreDelimiter = m_cPreDelimiter;
    clone->m_cPostDelimiter = m_cPostDelimiter;
    clone->m_eReadCharSet = m_eReadCharSet;
    clone->m_bIsNeedPassWord = m_bIsNeedPassWord;
    clone->m_dwSchemaNameBuffSize = m_dwSchemaNameBuffSize;
    clone->m_pSchemaNameBuff = CloneBuffer(m_pSchemaNameBuff, m_dwSchemaNameBuffSize);
    for (const char* name : m_vecSchemaName)
        clone->m_vecSchemaName.push_back(clone->m_pSchemaNameBuff.get() + (name - m_pSchemaNameBuff.get()));
    clone->m_dwSelectSchemaIndx = m_dwSelectSchemaIndx;
    clone->m_pConnectString = CloneBuffer(m_pConnectString, CONNECT_STRING_BUFFSIZE);
    clone->m_pRecordSetString = CloneBuffer(m_pRecordSetString, RECORDSET_STRING_BUFFSIZE);
    clone->m_dwFixFirstRowLen = m_dwFixFirstRowLen;
    clone->m_vecFixColLen = m_vecFixColLen;
    clone->m_bIsExistFixCRLF = m_bIsExistFixCRLF;
    clone->m_dwStartReadRowCnt = m_dwStartReadRowCnt;
    clone->m_bKeepLineEnds = m_bKeepLineEnds;
    clone->m_bReadAhead = m_bReadAhead;
    // Last, so that a clone destroyed because of a failed allocation does not remove the folder.
    CopyBuffer(clone->m_pUncompressFolderPath, m_pUncompressFolderPath, PATH_BUFFSIZE);
    return clone.release();
}

bool CSourceDataInfo::SetCommonInfo(const char* path, SCDeclareConstant::ESourceFileType type) {
    if (path == nullptr)
        return false;
    // The path may belong to this object, and Initialize clears it.
    std::array<char, PATH_BUFFSIZE> ownPath{};
    const std::size_t length = std::min(std::strlen(path), ownPath.size());
    std::memcpy(ownPath.data(), path, std::min(length, ownPath.size() - 1));
    m_eSourceFileType = type;
    try {
        Initialize();
        if (length >= ownPath.size()) {
            m_eSourceFileType = SCDeclareConstant::SFT_UNKNOWN;
            m_ftUpDateDateTime = {};
            return false;
        }
        std::memcpy(m_pFilePath.get(), ownPath.data(), ownPath.size());
        SCFilePath::GetFileTime(m_pFilePath.get(), SCFilePath::FTT_UPDATE, m_ftUpDateDateTime);
        m_eSourceFileType = FixSourceFileType(m_pFilePath.get(), static_cast<WORD>(length));
    } catch (...) {
        return false;
    }
    return m_eSourceFileType != SCDeclareConstant::SFT_UNKNOWN;
}

void CSourceDataInfo::Initialize() {
    m_vecSchemaName.clear();
    m_pSchemaNameBuff.reset();
    WipeAndFree(m_pConnectString, CONNECT_STRING_BUFFSIZE);
    m_pRecordSetString.reset();
    m_pFixFileData.reset();
    ClearBuffer(m_pFilePath);
    if (m_pPassWordString[0] != '\0')
        ForgetPassWords();
    WipeMemory(m_pPassWordString.get(), PATH_BUFFSIZE);
    ClearBuffer(m_pXtqfSourceFilePath);
    ClearBuffer(m_pUncompressFolderPath);
}

CSourceDataInfo::ESourceDataOpen CSourceDataInfo::PrepareReadSourceData(bool bUseOffice2007Provider) {
    try {
        if (IsDBSourceData(m_eSourceFileType))
            return PrepareDatabase(bUseOffice2007Provider);
        if (m_eSourceFileType == SCDeclareConstant::SFT_FIX)
            return PrepareFixFile();
        if (m_eSourceFileType == SCDeclareConstant::SFT_XTQF)
            return PreparePackage();
        return SDO_TEXT_FILE;
    } catch (...) {
        return SDO_EXCEPTION;
    }
}

CSourceDataInfo::ESourceDataOpen CSourceDataInfo::PrepareFixFile() {
    m_dwErrorCode = ERROR_SUCCESS;
    m_pFixFileData.reset();
    m_pFixFileData = CreateBuffer(FIX_READAREA + 1);
    if (ReadFixFile(m_pFilePath.get()))
        return SDO_FIX_FILE;
    const ESourceDataOpen result = GetCreateTmpFileErr();
    return result == SDO_FAILED ? SDO_READ_ERROR : result;
}

/// The result for the error of a failed preview; SDO_FAILED for an error without a result of its own.
CSourceDataInfo::ESourceDataOpen CSourceDataInfo::GetCreateTmpFileErr() {
    switch (m_dwErrorCode) {
    case ERROR_FILE_NOT_FOUND:
        return SDO_FILE_NOT_FOUND;
    case ERROR_ACCESS_DENIED:
        return SDO_ACCESS_DENIED;
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        return SDO_SHARING_VIOLATION;
    case ERROR_BUFFER_OVERFLOW:
        return SDO_FILENAME_TOO_LONG;
    case ERROR_DISK_FULL:
        return SDO_DISK_FULL;
    default:
        return SDO_FAILED;
    }
}

bool CSourceDataInfo::ReadFixFile(const char* path) {
    const CFileHandle file(CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                       FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    DWORD size = 0;
    if (!file.IsOpen() || !ReadFileWhole(file.Get(), m_pFixFileData.get(), FIX_READAREA, &size)) {
        SetDataAccessErrorCode();
        // Of several reads the first may have returned data.
        std::memset(m_pFixFileData.get(), 0, size);
        return false;
    }
    ScanFixRows(size);
    return true;
}

/// Ends the preview after its third row. The byte after the data is 0 and so completes no line end of two bytes.
void CSourceDataInfo::ScanFixRows(DWORD size) {
    m_bIsExistFixCRLF = false;
    DWORD rows = 0;
    DWORD pos = 0;
    while (pos < size && rows < FIX_SHOW_ROW) {
        const DWORD lineEnd = pos;
        if (m_pFixFileData[pos++] != m_cPreDelimiter)
            continue;
        if (m_cPostDelimiter != 0 && m_pFixFileData[pos++] != m_cPostDelimiter) {
            --pos;
            continue;
        }
        if (rows++ == 0)
            m_dwFixFirstRowLen = lineEnd;
        m_bIsExistFixCRLF = true;
    }
    m_dwFixScanPos = pos;
    if (rows == FIX_SHOW_ROW)
        m_pFixFileData[pos] = SCDataAccessDefine::NULL_CODE;
}

CSourceDataInfo::ESourceDataOpen CSourceDataInfo::PreparePackage() {
    DWORD number = 0;
    m_dwErrorCode = ERROR_SUCCESS;
    if (!SCTmpDirPath::GetTmpFileName(m_pUncompressFolderPath.get(), MAX_PATH, number,
                                      SCDataAccessDefine::STR_UNCOMPRESS_FOLDER_PREFIX,
                                      SCDataAccessDefine::STRLEN_UNCOMPRESS_FOLDER_PREFIX, "TQD")) {
        SetDataAccessErrorCode();
        return SDO_TMPFILE_ERROR;
    }
    // An empty file may have the name, which is needed for a folder.
    DeleteFileA(m_pUncompressFolderPath.get());
    const auto archive = std::make_unique<CUnZip>(m_pFilePath.get(), m_pPassWordString.get());
    if (!archive->Uncompress(m_pUncompressFolderPath.get())) {
        SetDataAccessErrorCode();
        return SDO_PASSWORD_ERROR;
    }
    const std::string dataFile = std::string(m_pUncompressFolderPath.get()) + SCDataAccessDefine::TQF_PATH_DATAFILE;
    if (dataFile.size() >= MAX_PATH) {
        m_dwErrorCode = ERROR_FILENAME_EXCED_RANGE;
        return SDO_FAILED;
    }
    SetXtqfSourceFilePath(dataFile.c_str());
    return SDO_PACKAGE;
}

SCDeclareConstant::ESourceFileType CSourceDataInfo::FixSourceFileType(const char* path, WORD length) {
    std::size_t dot = length;
    while (dot > 0 && path[dot] != SCDataAccessDefine::PERIOD_CODE)
        --dot;
    if (dot == 0)
        return SCDeclareConstant::SFT_UNKNOWN;

    std::string extension(path + dot + 1, length - dot - 1);
    for (char& c : extension)
        c = static_cast<char>(_mbctolower(static_cast<unsigned char>(c)));

    if (extension == SCDataAccessDefine::EXT_CSV)
        return SCDeclareConstant::SFT_CSV;
    if (extension == SCDataAccessDefine::EXT_XLS)
        return SCDeclareConstant::SFT_XLS;
    if (extension == SCDataAccessDefine::EXT_MDB)
        return SCDeclareConstant::SFT_MDB;
    if (extension == SCDataAccessDefine::EXT_XLSX)
        return SCDeclareConstant::SFT_XLSX;
    if (extension == SCDataAccessDefine::EXT_XTQF)
        return SCDeclareConstant::SFT_XTQF;
    if (extension == SCDataAccessDefine::EXT_ACCDB)
        return SCDeclareConstant::SFT_ACCDB;
    if (extension != SCDataAccessDefine::EXT_TXT)
        return GetTextFileType(path);

    // For a "txt" file the type that the caller expects takes precedence over the first line.
    if (m_eSourceFileType == SCDeclareConstant::SFT_TXT || m_eSourceFileType == SCDeclareConstant::SFT_FIX)
        return m_eSourceFileType;
    const auto sniffed = GetTextFileType(path);
    return sniffed == SCDeclareConstant::SFT_UNKNOWN ? SCDeclareConstant::SFT_FIX : sniffed;
}

SCDeclareConstant::ESourceFileType CSourceDataInfo::GetTextFileType(const char* path) {
    const CFileHandle file(CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                       FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!file.IsOpen())
        return SCDeclareConstant::SFT_UNKNOWN;
    const std::unique_ptr<char[]> bytes(new (std::nothrow) char[FIX_READ_BUFFSIZE]);
    DWORD size = 0;
    if (!bytes || !ReadFileWhole(file.Get(), bytes.get(), FIX_READ_BUFFSIZE, &size))
        return SCDeclareConstant::SFT_UNKNOWN;
    return SniffFirstLine({bytes.get(), size});
}

/// Only CR LF ends the first line, and quotes have no meaning.
SCDeclareConstant::ESourceFileType CSourceDataInfo::SniffFirstLine(std::string_view bytes) const {
    bool hasTab = false;
    bool hasComma = false;
    const std::size_t scanned = std::min<std::size_t>(bytes.size(), m_dwFirstLineScanLimit);
    for (std::size_t i = 0; i < scanned; ++i) {
        hasTab |= bytes[i] == SCDataAccessDefine::TAB_CODE;
        hasComma |= bytes[i] == SCDataAccessDefine::CAMMA_CODE;
        if (bytes[i] == SCDataAccessDefine::CR_CODE && i + 1 < bytes.size() &&
            bytes[i + 1] == SCDataAccessDefine::LF_CODE) {
            if (hasTab)
                return SCDeclareConstant::SFT_TXT;
            return hasComma ? SCDeclareConstant::SFT_CSV : SCDeclareConstant::SFT_FIX;
        }
    }
    return SCDeclareConstant::SFT_UNKNOWN;
}

bool CSourceDataInfo::UncompressDeleteDirectory(const char* folder) {
    return SCFolderTree::Remove(folder);
}

bool CSourceDataInfo::IsDBSourceData(SCDeclareConstant::ESourceFileType type) const {
    return type >= SCDeclareConstant::SFT_XLS && type <= SCDeclareConstant::SFT_ACCDB;
}

void CSourceDataInfo::SetDataAccessErrorCode() {
    m_dwErrorCode = GetLastError();
}

DWORD CSourceDataInfo::GetErrorCode() const {
    return m_dwErrorCode;
}

bool CSourceDataInfo::GetFilePath(const char*& path) const {
    const auto& buffer = m_eSourceFileType == SCDeclareConstant::SFT_XTQF ? m_pXtqfSourceFilePath : m_pFilePath;
    if (buffer[0] == '\0')
        return false;
    path = buffer.get();
    return true;
}

bool CSourceDataInfo::GetSourceFileType(SCDeclareConstant::ESourceFileType& type) const {
    if (m_eSourceFileType == SCDeclareConstant::SFT_UNKNOWN)
        return false;
    type = m_eSourceFileType;
    return true;
}

bool CSourceDataInfo::GetUpDateDateTime(FILETIME& time) const {
    time = m_ftUpDateDateTime;
    return true;
}

void CSourceDataInfo::SetDelimiter(char pre, char post) {
    m_cPreDelimiter = pre;
    m_cPostDelimiter = post;
}

void CSourceDataInfo::GetDelimiter(char* pre, char* post) const {
    *pre = m_cPreDelimiter;
    *post = m_cPostDelimiter;
}

void CSourceDataInfo::SetReadCharSet(EReadCharSet charSet) {
    m_eReadCharSet = charSet;
}

CSourceDataInfo::EReadCharSet CSourceDataInfo::GetReadCharSet() const {
    return m_eReadCharSet;
}

void CSourceDataInfo::SetKeepLineEnds(bool bKeep) {
    m_bKeepLineEnds = bKeep;
}

bool CSourceDataInfo::GetKeepLineEnds() const {
    return m_bKeepLineEnds;
}

void CSourceDataInfo::SetReadAhead(bool bReadAhead) {
    m_bReadAhead = bReadAhead;
}

bool CSourceDataInfo::GetReadAhead() const {
    return m_bReadAhead;
}

void CSourceDataInfo::SetStartReadRowCnt(DWORD rows) {
    m_dwStartReadRowCnt = rows;
}

DWORD CSourceDataInfo::GetStartReadRowCnt() const {
    return m_dwStartReadRowCnt;
}

bool CSourceDataInfo::GetFixFileData(const char*& data, DWORD& length) const {
    if (!m_pFixFileData)
        return false;
    data = m_pFixFileData.get();
    length = static_cast<DWORD>(std::strlen(data));
    return true;
}

bool CSourceDataInfo::SetFixColLen(std::vector<WORD> widths) {
    m_vecFixColLen = std::move(widths);
    return true;
}

const std::vector<WORD> CSourceDataInfo::GetFixColLen() const {
    return m_vecFixColLen;
}

bool CSourceDataInfo::GetIsExistFixCRLF() const {
    return m_bIsExistFixCRLF;
}

bool CSourceDataInfo::SetPassWordString(const char* password) {
    if (password == nullptr)
        return false;
    const std::size_t length = std::strlen(password);
    if (length >= MAX_PATH)
        return false;
    if (std::strcmp(password, m_pPassWordString.get()) != 0)
        ForgetPassWords();
    // The password may belong to this object.
    std::memmove(m_pPassWordString.get(), password, length + 1);
    // A longer one before it may have an end that is still there.
    WipeMemory(m_pPassWordString.get() + length, PATH_BUFFSIZE - length);
    return true;
}

const char* CSourceDataInfo::GetPassWordString() const {
    return m_pPassWordString.get();
}

bool CSourceDataInfo::GetIsNeedPassWord() {
    return m_bIsNeedPassWord;
}

void CSourceDataInfo::SetXtqfSourceFilePath(const char* path) {
    if (path == nullptr)
        return;
    // The path may belong to this object.
    std::array<char, PATH_BUFFSIZE> copy{};
    const std::string_view text(path);
    if (text.size() < copy.size())
        text.copy(copy.data(), text.size());
    std::memcpy(m_pXtqfSourceFilePath.get(), copy.data(), copy.size());
}

const char* CSourceDataInfo::GetUncompressFolderPath() const {
    return m_pUncompressFolderPath.get();
}

} // namespace NSTQ::NSTQCore
