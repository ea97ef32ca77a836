#include "CDataAccess.h"

#include "CADOOperater.h"
#include "CCsvDataAccess.h"
#include "CFixDataAccess.h"
#include "CSourceDataInfo.h"

namespace NSTQ::NSTQCore {
namespace {

/// The three sizing limits, in the order in which every reader takes them.
struct SLimits {
    DWORD dwMaxFieldCnt;
    DWORD dwMaxLineSize;
    DWORD dwMaxFieldSize;
};

std::unique_ptr<IDataAccess> CreateReader(const SLimits& limits, const CSourceDataInfo& info) {
    auto type = SCDeclareConstant::SFT_UNKNOWN;
    if (!info.GetSourceFileType(type))
        return nullptr;
    char pre = 0;
    char post = 0;
    info.GetDelimiter(&pre, &post);

    switch (type) {
    case SCDeclareConstant::SFT_CSV:
    case SCDeclareConstant::SFT_TXT: {
        auto reader =
            std::make_unique<CCsvDataAccess>(limits.dwMaxFieldCnt, limits.dwMaxLineSize, limits.dwMaxFieldSize);
        if (type == SCDeclareConstant::SFT_TXT)
            reader->SetSeparator(SCDataAccessDefine::TAB_CODE);
        reader->SetDelimiter(pre, post);
        return reader;
    }
    case SCDeclareConstant::SFT_FIX: {
        auto reader = std::make_unique<CFixDataAccess>(limits.dwMaxFieldCnt, limits.dwMaxLineSize,
                                                       limits.dwMaxFieldSize, &info);
        reader->SetDelimiter(pre, post);
        return reader;
    }
    case SCDeclareConstant::SFT_XLS:
    case SCDeclareConstant::SFT_MDB:
    case SCDeclareConstant::SFT_XLSX:
    case SCDeclareConstant::SFT_ACCDB:
        return std::make_unique<CADOOperater>(limits.dwMaxFieldCnt, limits.dwMaxLineSize, limits.dwMaxFieldSize);
    default:
        return nullptr;
    }
}

} // namespace

CDataAccess::CDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize, const CSourceDataInfo* pInfo)
    : m_pDataAccess(CreateReader({dwMaxFieldCnt, dwMaxLineSize, dwMaxFieldSize}, *pInfo)), m_pSourceDataInfo(pInfo) {}

CDataAccess::~CDataAccess() = default;

bool CDataAccess::FileOpen() {
    return m_pDataAccess && KeepErrorCode(m_pDataAccess->FileOpen(m_pSourceDataInfo));
}

bool CDataAccess::HasNextLineData() {
    return m_pDataAccess && m_pDataAccess->HasNextLineData();
}

bool CDataAccess::GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount) {
    return m_pDataAccess && KeepErrorCode(m_pDataAccess->GetLineData(ppData, pLen, dwCount));
}

bool CDataAccess::MoveFileBegin() {
    return m_pDataAccess && m_pDataAccess->MoveFileBegin();
}

bool CDataAccess::MoveFileEnd() {
    return m_pDataAccess && m_pDataAccess->MoveFileEnd();
}

bool CDataAccess::GetSpecificLineData(DWORD dwLine, const char**& ppData, const WORD*& pLen, DWORD& dwCount) {
    return m_pDataAccess && KeepErrorCode(m_pDataAccess->GetSpecificLineData(dwLine, ppData, pLen, dwCount));
}

DWORD CDataAccess::GetErrorCode() {
    return m_dwErrorCode;
}

bool CDataAccess::KeepErrorCode(bool bResult) {
    if (!bResult)
        m_dwErrorCode = m_pDataAccess->GetErrorCode();
    return bResult;
}

} // namespace NSTQ::NSTQCore
