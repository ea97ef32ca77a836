// The part of CSourceDataInfo for workbooks and databases: connection string, list of sheets or tables, and
// record-set string.
#include "CADOOperater.h"
#include "CSourceDataInfo.h"
#include "platform/ado/ConnectionString.h"
#include "platform/automation/WipeMemory.h"
#include "tqcAccess/ComError.h"

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <string_view>

namespace NSTQ::NSTQCore {

using namespace NSTQ::Platform;

namespace {

/// Concatenates the texts, followed by a NUL, truncated to `size` bytes.
void WriteTexts(char* target, std::size_t size, std::initializer_list<std::string_view> texts) {
    std::size_t length = 0;
    for (const std::string_view text : texts)
        length += text.copy(target + length, size - 1 - length);
    target[length] = SCDataAccessDefine::NULL_CODE;
}

bool IsWorkbook(SCDeclareConstant::ESourceFileType type) {
    return type == SCDeclareConstant::SFT_XLS || type == SCDeclareConstant::SFT_XLSX;
}

/// The name of a worksheet as it is listed: without '$' and quotes. Null for other names of a workbook.
char* GetSheetName(char* name, std::size_t length) {
    const char quote = *SCDataAccessDefine::STR_SINGLE_QUOTE;
    const char dollar = *SCDataAccessDefine::STR_DOLLAR;
    if (length >= 1 && name[length - 1] == dollar) {
        name[length - 1] = SCDataAccessDefine::NULL_CODE;
        return name;
    }
    if (length >= 4 && name[0] == quote && name[length - 1] == quote && name[length - 2] == dollar) {
        name[length - 2] = SCDataAccessDefine::NULL_CODE;
        return name + 1;
    }
    return nullptr;
}

} // namespace

CSourceDataInfo::ESourceDataOpen CSourceDataInfo::PrepareDatabase(bool bUseOffice2007Provider) {
    try {
        WipeAndFree(m_pConnectString, CONNECT_STRING_BUFFSIZE);
        m_pConnectString = std::make_unique<char[]>(CONNECT_STRING_BUFFSIZE + 1);
        m_pRecordSetString.reset();
        m_pRecordSetString = std::make_unique<char[]>(RECORDSET_STRING_BUFFSIZE + 1);
        if (!CreateConnectString(m_pFilePath.get(), m_eSourceFileType, bUseOffice2007Provider))
            return SDO_FAILED;
        if (SetSchemaName(m_eSourceFileType))
            return SDO_DATABASE;
        m_bIsNeedPassWord = true;
        return SDO_PASSWORD_ERROR;
    } catch (const _com_error& error) {
        return GetListingError(error.Error());
    } catch (...) {
        return SDO_EXCEPTION;
    }
}

CSourceDataInfo::ESourceDataOpen CSourceDataInfo::GetListingError(LONG hr) {
    if (IsWorkbook(m_eSourceFileType) && hr == E_FAIL)
        return SDO_PASSWORD_ERROR;
    m_bIsNeedPassWord = true;
    return !IsWorkbook(m_eSourceFileType) && hr == DB_SEC_E_AUTH_FAILED ? SDO_PASSWORD_ERROR : SDO_ACCESS_DENIED;
}

bool CSourceDataInfo::CreateConnectString(const char* path, SCDeclareConstant::ESourceFileType type,
                                          bool bUseOffice2007Provider) {
    if (type == SCDeclareConstant::SFT_UNKNOWN)
        return false;
    if (!IsDBSourceData(type))
        return true;
    const bool is2007 =
        bUseOffice2007Provider || type == SCDeclareConstant::SFT_XLSX || type == SCDeclareConstant::SFT_ACCDB;
    const char* const workbook =
        is2007 ? SCDataAccessDefine::EXCLE2007_POSTCONNECTSTRING : SCDataAccessDefine::EXCLE2003_POSTCONNECTSTRING;
    WriteTexts(
        m_pConnectString.get(), CONNECT_STRING_BUFFSIZE,
        {is2007 ? SCDataAccessDefine::OFFICE2007_PRECONNECTSTRING : SCDataAccessDefine::OFFICE2003_PRECONNECTSTRING,
         path, IsWorkbook(type) ? workbook : SCDataAccessDefine::ACCESS_POSTCONNECTSTRING, databasePassWordClause,
         m_pPassWordString.get(), ";"});
    return true;
}

bool CSourceDataInfo::SetSchemaName(SCDeclareConstant::ESourceFileType type) {
    // A failed listing must not change the size of the existing buffer.
    DWORD dwSize = 0;
    DWORD dwCount = 0;
    if (!CADOOperater::GetSchemaNameSize(dwSize, dwCount, m_pConnectString.get()))
        return false;
    m_vecSchemaName.clear();
    m_pSchemaNameBuff.reset();
    m_pSchemaNameBuff = std::make_unique<char[]>(std::size_t{dwSize} + 1);
    m_dwSchemaNameBuffSize = dwSize;
    const auto names = std::make_unique<char*[]>(dwCount);
    const auto lengths = std::make_unique<WORD[]>(dwCount);
    if (!CADOOperater::GetSchemaName(names.get(), lengths.get(), m_pSchemaNameBuff.get(), dwCount,
                                     m_pConnectString.get()))
        return false;
    for (DWORD i = 0; i < dwCount; ++i) {
        if (char* const name = IsWorkbook(type) ? GetSheetName(names[i], lengths[i]) : names[i])
            m_vecSchemaName.push_back(name);
    }
    return true;
}

bool CSourceDataInfo::GetSchemaName(char* pName) const {
    if (m_dwSelectSchemaIndx >= m_vecSchemaName.size())
        return false;
    const char* const name = m_vecSchemaName[m_dwSelectSchemaIndx];
    std::memcpy(pName, name, std::strlen(name) + 1);
    return true;
}

bool CSourceDataInfo::GetSchemaName(std::vector<char*>& vecName) const {
    if (m_vecSchemaName.empty())
        return false;
    vecName = m_vecSchemaName;
    return true;
}

bool CSourceDataInfo::SetSelectSchemaIndx(DWORD dwIndex) {
    if (dwIndex >= m_vecSchemaName.size())
        return false;
    m_dwSelectSchemaIndx = dwIndex;
    return CreateRecordSetString(m_vecSchemaName[dwIndex]);
}

bool CSourceDataInfo::CreateRecordSetString(const char* pName) {
    if (!IsDBSourceData(m_eSourceFileType) || pName == nullptr || !m_pRecordSetString)
        return false;
    WriteTexts(m_pRecordSetString.get(), RECORDSET_STRING_BUFFSIZE,
               {SCDataAccessDefine::PRE_RECORDSET_STRING, pName,
                IsWorkbook(m_eSourceFileType) ? SCDataAccessDefine::STR_DOLLAR : "",
                SCDataAccessDefine::POST_RECORDSET_STRING});
    return true;
}

bool CSourceDataInfo::GetConnectString(const char*& pConnectString) const {
    return GetDatabaseString(m_pConnectString, pConnectString);
}

bool CSourceDataInfo::GetRecordSetString(const char*& pRecordSetString) const {
    return GetDatabaseString(m_pRecordSetString, pRecordSetString);
}

bool CSourceDataInfo::GetDatabaseString(const std::unique_ptr<char[]>& buffer, const char*& text) const {
    if (!IsDBSourceData(m_eSourceFileType) || !buffer || buffer[0] == SCDataAccessDefine::NULL_CODE)
        return false;
    text = buffer.get();
    return true;
}

} // namespace NSTQ::NSTQCore
