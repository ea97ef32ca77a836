// The listing of sheets and tables, which needs no reader object.
#include "CADOOperater.h"

#include "AdoObjects.h"
#include "SCDataAccessDefine.h"
#include "tqcAccess/CodePage.h"

#include <cstring>
#include <functional>
#include <limits>
#include <string>

namespace NSTQ::NSTQCore {

using namespace NSTQ::Platform;

namespace {

/// The sizes that the last GetSchemaNameSize of this thread returned, and for which string. Only a hash of the string
/// is kept, because it may contain a password.
struct SToldRoom {
    bool bTold = false;
    std::size_t hash = 0;
    DWORD dwSize = 0;
    DWORD dwCount = 0;
};

constinit thread_local SToldRoom toldRoom;

std::size_t GetHash(const char* pConnectString) {
    return std::hash<std::string_view>()(pConnectString == nullptr ? "" : pConnectString);
}

bool IsSame(const std::string& left, const char* right) {
    return _mbscmp(reinterpret_cast<const unsigned char*>(left.c_str()),
                   reinterpret_cast<const unsigned char*>(right)) == 0;
}

std::string GetColumnText(_Recordset& schema, const char* column) {
    const CBstr name = BstrFromAnsi(column);
    VARIANT index;
    index.vt = VT_BSTR;
    index.bstrVal = name.Get();
    const VARIANT& value = Require(Require(schema.GetFields()).GetItem(index)).GetValue();
    if (value.vt == VT_BSTR)
        return AnsiFromWide(BstrView(value.bstrVal));
    CVariant converted;
    const HRESULT result = VariantChangeType(converted.Get(), &value, 0, VT_BSTR);
    if (Failed(result))
        throw _com_error(result, std::string(column) + " of the table schema cannot be converted to text");
    return AnsiFromWide(BstrView(converted.Value().bstrVal));
}

/// Opens the source, calls `start` when the schema is open, `take` with each name, and `end` after the last one,
/// before the source is closed.
template <class TStart, class TTake, class TEnd>
void ListNames(const char* pConnectString, TStart start, TTake take, TEnd end) {
    const CComApartment apartment;
    const auto connection = CreateAdoObject<_Connection>(SCDataAccessDefine::ADODB_CONNECTION);
    OpenConnection(Require(connection.Get()), pConnectString);
    const auto schema = connection->OpenSchema(adSchemaTables);
    start();
    while (!schema->GetEOF()) {
        const std::string type = GetColumnText(*schema.Get(), SCDataAccessDefine::TABLE_TYPE);
        if (IsSame(type, SCDataAccessDefine::TABLE) || IsSame(type, SCDataAccessDefine::VIEW))
            take(GetColumnText(*schema.Get(), SCDataAccessDefine::TABLE_NAME));
        schema->MoveNext();
    }
    end();
    schema->Close();
    connection->Close();
}

} // namespace

bool CADOOperater::GetSchemaNameSize(DWORD& dwSize, DWORD& dwCount, const char* pConnectString) {
    toldRoom = {};
    ListNames(
        pConnectString, [&] { dwSize = dwCount = 0; },
        [&](const std::string& name) {
            dwSize += static_cast<DWORD>(name.size() + 1);
            ++dwCount;
        },
        [] {});
    toldRoom = {true, GetHash(pConnectString), dwSize, dwCount};
    return true;
}

bool CADOOperater::GetSchemaName(char** ppName, WORD* pLen, char* pNameBuff, DWORD& dwCount,
                                 const char* pConnectString) {
    constexpr DWORD unlimited = std::numeric_limits<DWORD>::max();
    const bool isTold = toldRoom.bTold && toldRoom.hash == GetHash(pConnectString);
    const DWORD dwRoom = isTold ? toldRoom.dwSize : unlimited;
    const DWORD dwMaxCount = isTold ? toldRoom.dwCount : unlimited;
    DWORD dwWritten = 0;
    std::size_t offset = 0;
    ListNames(
        pConnectString, [] {},
        [&](const std::string& name) {
            if (dwWritten == dwMaxCount || name.size() >= dwRoom - offset ||
                name.size() > std::numeric_limits<WORD>::max())
                throw _com_error(DB_E_DATAOVERFLOW, "the names need more memory than before: " + name);
            ppName[dwWritten] = pNameBuff + offset;
            pLen[dwWritten] = static_cast<WORD>(name.size());
            std::memcpy(pNameBuff + offset, name.c_str(), name.size() + 1);
            offset += name.size() + 1;
            ++dwWritten;
        },
        [&] { dwCount = dwWritten; });
    return true;
}

} // namespace NSTQ::NSTQCore
