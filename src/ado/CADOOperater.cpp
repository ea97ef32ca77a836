#include "CADOOperater.h"

#include "AdoObjects.h"
#include "CSourceDataInfo.h"
#include "FieldText.h"
#include "platform/codepage/Transcode.h"
#include "tqcAccess/UserLocale.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

namespace NSTQ::NSTQCore {

using namespace NSTQ::Platform;

namespace {

constexpr DWORD maxSize = 0xFFFF;

/// Calls `open` and returns its HRESULT; stores its failure.
template <class TOpen>
HRESULT GetResult(std::optional<_com_error>& failure, TOpen open) {
    try {
        open();
        return S_OK;
    } catch (const _com_error& error) {
        failure = error;
        return error.Error();
    }
}

Field& GetColumn(_Recordset& recordset, DWORD dwField) {
    VARIANT index;
    index.vt = VT_I4;
    index.lVal = static_cast<std::int32_t>(dwField);
    return Require(Require(recordset.GetFields()).GetItem(index));
}

/// The text of a value that is not missing; `converted` provides the memory if it is not a text.
std::u16string_view GetText(const VARIANT& value, CVariant& converted, DWORD dwField) {
    if (value.vt == VT_BSTR)
        return BstrView(value.bstrVal);
    const HRESULT result = VariantChangeType(converted.Get(), &value, 0, VT_BSTR);
    if (Failed(result))
        throw _com_error(result,
                         "the value in column " + std::to_string(dwField + 1) + " cannot be converted to text");
    return BstrView(converted.Value().bstrVal);
}

[[noreturn]] void FailWithOverflow(const char* what, DWORD dwField) {
    throw _com_error(DB_E_DATAOVERFLOW,
                     std::string(what) + " does not fit its buffer, at column " + std::to_string(dwField + 1));
}

} // namespace

/// The order matters: the objects must be destroyed before the apartment.
struct CADOOperater::SAdo {
    CComApartment apartment;
    CComPtr<_Connection> pConnection = CreateAdoObject<_Connection>(SCDataAccessDefine::ADODB_CONNECTION);
    CComPtr<_Recordset> pRecordset = CreateAdoObject<_Recordset>(SCDataAccessDefine::ADODB_RECORDSET);
    CVariant converted;
    const CBstr nullText = BstrFromAnsi(GetUserLocale().nullText); ///< stands for a missing value
    std::vector<SFieldType> types;                                 ///< those handed out last
    std::vector<std::string_view> plainTexts;                      ///< of the current row, one for each column
    std::optional<_com_error> failure; ///< of the last FileOpen; its description is what the host sees

    SAdo() { pRecordset->PutCursorLocation(adUseClient); }
};

CADOOperater::CADOOperater(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize)
    : m_dwMaxFieldSize(std::min(dwMaxFieldSize, maxSize)), m_dwMaxLineSize(std::min(dwMaxLineSize, maxSize)),
      m_dwMaxFieldCnt(dwMaxFieldCnt), m_pAdo(std::make_unique<SAdo>()),
      m_pFieldBuff(std::make_unique<char[]>(std::size_t{m_dwMaxFieldSize} + 1)),
      m_pLineBuff(std::make_unique<char[]>(std::size_t{m_dwMaxLineSize} + 1)),
      m_ppFieldData(std::make_unique<const char*[]>(m_dwMaxFieldCnt)),
      m_pFieldLen(std::make_unique<WORD[]>(m_dwMaxFieldCnt)) {}

CADOOperater::~CADOOperater() {
    try {
        m_pAdo->pRecordset->Close();
    } catch (...) {
        // Nothing was open, or closing failed, which a destructor cannot report.
    }
    try {
        m_pAdo->pConnection->Close();
    } catch (...) {
        // As above.
    }
}

bool CADOOperater::FileOpen(const CSourceDataInfo* pInfo) {
    return _TryOpen(pInfo,
                    [this](const CSourceDataInfo& info) { return _OpenConnection(info) && _OpenRecordset(info); });
}

bool CADOOperater::OpenTable(const CSourceDataInfo* pInfo) {
    m_dwFieldCnt = m_dwMaxRowNum = m_dwReadRowCnt = 0;
    try {
        m_pAdo->pRecordset->Close();
    } catch (...) {
        // None is open if opening the previous one failed.
    }
    return _TryOpen(pInfo, [this](const CSourceDataInfo& info) { return _OpenRecordset(info); });
}

template <class TOpen>
bool CADOOperater::_TryOpen(const CSourceDataInfo* pInfo, TOpen open) {
    InitialErrorRet();
    m_lCutColumn = -1;
    m_bKeepLineEnds = pInfo != nullptr && pInfo->GetKeepLineEnds();
    try {
        return pInfo != nullptr && open(*pInfo);
    } catch (const _com_error& error) {
        m_pAdo->failure = error;
        return false;
    } catch (...) {
        return false;
    }
}

bool CADOOperater::_OpenConnection(const CSourceDataInfo& info) {
    const char* pConnectString = nullptr;
    if (!info.GetConnectString(pConnectString))
        return false;
    _Connection& connection = Require(m_pAdo->pConnection.Get());
    connection.PutReadAhead(info.GetReadAhead());
    m_hrErrorRet = GetResult(m_pAdo->failure, [&] { OpenConnection(connection, pConnectString); });
    return !Failed(m_hrErrorRet);
}

bool CADOOperater::_OpenRecordset(const CSourceDataInfo& info) {
    const char* pRecordSetString = nullptr;
    if (!info.GetRecordSetString(pRecordSetString))
        return false;
    const CBstr statement = BstrFromAnsi(pRecordSetString);
    VARIANT source;
    source.vt = VT_BSTR;
    source.bstrVal = statement.Get();
    VARIANT connection;
    connection.vt = VT_DISPATCH;
    connection.pdispVal = m_pAdo->pConnection.Get();
    _Recordset& recordset = *m_pAdo->pRecordset.Get();
    m_hrErrorRet = GetResult(
        m_pAdo->failure, [&] { recordset.Open(source, connection, adOpenForwardOnly, adLockReadOnly, adCmdText); });
    if (Failed(m_hrErrorRet))
        return false;

    const std::int64_t rows = recordset.GetRecordCount();
    if (rows > 0)
        m_dwMaxRowNum = static_cast<DWORD>(rows);
    const LONG columns = Require(recordset.GetFields()).GetCount();
    if (columns < 0 || static_cast<DWORD>(columns) > m_dwMaxFieldCnt) {
        m_hrErrorRet = DB_E_DATAOVERFLOW;
        recordset.Close();
        throw _com_error(m_hrErrorRet, std::to_string(columns) + " columns, more than the " +
                                           std::to_string(m_dwMaxFieldCnt) + " that the reader was constructed for");
    }
    m_dwFieldCnt = static_cast<DWORD>(columns);
    m_pAdo->plainTexts.resize(m_dwFieldCnt);
    return true;
}

bool CADOOperater::FileClose() {
    try {
        m_pAdo->pRecordset->Close();
        m_pAdo->pConnection->Close();
        return true;
    } catch (...) {
        return false;
    }
}

bool CADOOperater::HasNextLineData() {
    return !m_pAdo->pRecordset->GetEOF();
}

bool CADOOperater::GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount) {
    InitialErrorCode();
    m_lCutColumn = -1;
    if (!HasNextLineData())
        return false;
    _Recordset& recordset = *m_pAdo->pRecordset.Get();
    const bool isNull = m_pAdo->nullText.View().empty() && recordset.IsNullRow();
    if (isNull)
        _StoreNullRow();
    else
        _StoreRow();
    recordset.MoveNext();
    ++m_dwReadRowCnt;
    dwCount = m_dwFieldCnt;
    ppData = m_ppFieldData.get();
    pLen = m_pFieldLen.get();
    return true;
}

bool CADOOperater::GetFieldsName(const char**& ppData, const WORD*& pLen, DWORD& dwCount) {
    std::size_t offset = 0;
    for (DWORD i = 0; i < m_dwFieldCnt; ++i) {
        const auto name = ConvertWideToAnsi(GetColumn(*m_pAdo->pRecordset.Get(), i).GetName(), m_pFieldBuff.get(),
                                            std::size_t{m_dwMaxFieldSize} + 1);
        if (!name.isComplete)
            FailWithOverflow("a column name", i);
        const std::string_view clean(m_pFieldBuff.get(), CleanName(m_pFieldBuff.get(), name.length));
        offset = _StoreField(i, offset, clean, 1);
    }
    dwCount = m_dwFieldCnt;
    ppData = m_ppFieldData.get();
    pLen = m_pFieldLen.get();
    return true;
}

bool CADOOperater::GetFieldsType(const SFieldType*& pTypes, DWORD& dwCount) {
    std::vector<SFieldType> types;
    types.reserve(m_dwFieldCnt);
    for (DWORD i = 0; i < m_dwFieldCnt; ++i) {
        Field& field = GetColumn(*m_pAdo->pRecordset.Get(), i);
        types.push_back({field.GetType(), field.GetPrecision(), field.GetNumericScale(),
                         static_cast<DWORD>(field.GetDefinedSize())});
    }
    m_pAdo->types = std::move(types);
    pTypes = m_pAdo->types.data();
    dwCount = m_dwFieldCnt;
    return true;
}

/// A text that needs no conversion gives the same as the conversion of the value.
void CADOOperater::_StoreRow() {
    const std::span<std::string_view> texts = m_pAdo->plainTexts;
    m_pAdo->pRecordset->GetPlainTexts(texts, m_bKeepLineEnds);
    std::size_t offset = 0;
    for (DWORD i = 0; i < m_dwFieldCnt; ++i) {
        const bool isPlain = texts[i].data() != nullptr && texts[i].size() <= m_dwMaxFieldSize;
        offset = _StoreField(i, offset, isPlain ? texts[i] : _ConvertField(i), 0);
    }
}

/// Converts a value of the current row to the field buffer.
std::string_view CADOOperater::_ConvertField(DWORD dwField) {
    const VARIANT& value = GetColumn(*m_pAdo->pRecordset.Get(), dwField).GetValue();
    const auto whole = value.vt == VT_NULL ? m_pAdo->nullText.View() : GetText(value, m_pAdo->converted, dwField);
    const SFieldText text = MakeFieldText(whole, m_pFieldBuff.get(), m_dwMaxFieldSize, m_bKeepLineEnds);
    if (text.isCut && m_lCutColumn < 0)
        m_lCutColumn = static_cast<LONG>(dwField);
    return {m_pFieldBuff.get(), text.length};
}

/// Same result as _StoreField with an empty text for every field, but faster.
void CADOOperater::_StoreNullRow() {
    const DWORD dwRoom = m_dwMaxLineSize + 1;
    if (m_dwFieldCnt > dwRoom)
        FailWithOverflow("a row", dwRoom);
    char* const line = m_pLineBuff.get();
    std::fill_n(line, m_dwFieldCnt, SCDataAccessDefine::NULL_CODE);
    std::fill_n(m_pFieldLen.get(), m_dwFieldCnt, WORD{0});
    for (DWORD i = 0; i < m_dwFieldCnt; ++i)
        m_ppFieldData[i] = line + i;
}

/// Copies a text to the line buffer and returns the offset of the next one.
std::size_t CADOOperater::_StoreField(DWORD dwField, std::size_t offset, std::string_view text,
                                      std::size_t countedNul) {
    const std::size_t length = text.size();
    if (length + 1 > std::size_t{m_dwMaxLineSize} + 1 - offset || length + countedNul > maxSize)
        FailWithOverflow("a row", dwField);
    char* const target = m_pLineBuff.get() + offset;
    std::memcpy(target, text.data(), length);
    target[length] = SCDataAccessDefine::NULL_CODE;
    m_ppFieldData[dwField] = target;
    m_pFieldLen[dwField] = static_cast<WORD>(length + countedNul);
    return offset + length + 1;
}

bool CADOOperater::MoveFileBegin() {
    InitialErrorRet();
    return false;
}

bool CADOOperater::MoveFileEnd() {
    InitialErrorRet();
    return false;
}

bool CADOOperater::GetSpecificLineData(DWORD dwLine, const char**&, const WORD*&, DWORD&) {
    if (dwLine <= m_dwMaxRowNum)
        MoveFileBegin();
    return false;
}

DWORD CADOOperater::GetErrorCode() {
    return m_dwErrorCode;
}

LONG CADOOperater::GetErrorRet() {
    return m_hrErrorRet;
}

const char* CADOOperater::GetErrorDescription() {
    return m_pAdo->failure ? m_pAdo->failure->Description() : "";
}

LONG CADOOperater::GetCutColumn() const {
    return m_lCutColumn;
}

int CADOOperater::GetReadPosition() {
    constexpr std::uint64_t thousandths = 1000;
    return m_dwMaxRowNum == 0 ? 0 : static_cast<int>(m_dwReadRowCnt * thousandths / m_dwMaxRowNum);
}

DWORD CADOOperater::GetMaxRowNum() {
    return m_dwMaxRowNum;
}

DWORD CADOOperater::GetFieldCnt() {
    return m_dwFieldCnt;
}

void CADOOperater::InitialErrorCode() {
    m_dwErrorCode = 0;
}

void CADOOperater::InitialErrorRet() {
    m_hrErrorRet = S_OK;
    m_pAdo->failure.reset();
}

} // namespace NSTQ::NSTQCore
