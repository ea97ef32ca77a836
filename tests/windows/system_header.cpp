// A program of others that includes <windows.h> before or after the library's headers, and uses both.
#if defined(SYSTEM_FIRST)
#include <windows.h>
#endif

#include "CADOOperater.h"
#include "CCsvDataAccess.h"
#include "CCsvOutPut.h"
#include "CDataAccess.h"
#include "CFixDataAccess.h"
#include "CSourceDataInfo.h"
#include "SCDataAccessDefine.h"
#include "tqcAccess/CodePage.h"
#include "tqcAccess/ComError.h"
#include "tqcAccess/SystemPath.h"
#include "tqcAccess/UserLocale.h"

#if defined(SYSTEM_LAST)
#include <windows.h>
#endif

#include <type_traits>

static_assert(std::is_same_v<NSTQ::DWORD, DWORD> && std::is_same_v<NSTQ::LONG, LONG> &&
              std::is_same_v<NSTQ::HANDLE, HANDLE> && std::is_same_v<NSTQ::LONGLONG, LONGLONG> &&
              std::is_same_v<NSTQ::WORD, WORD>);
static_assert(E_FAIL == static_cast<HRESULT>(0x80004005) && CP_UTF8 == 65001);

int main() {
    NSTQ::Platform::SetAnsiCodePage(CP_UTF8);
    try {
        throw NSTQ::Platform::_com_error(E_FAIL, "what failed");
    } catch (const NSTQ::Platform::_com_error& error) {
        if (error.Error() != E_FAIL)
            return 1;
    }
    // Data of the DLL, a class of it, and what it returns.
    NSTQ::NSTQCore::CSourceDataInfo info;
    NSTQ::NSTQCore::CCsvDataAccess reader(10, 100, 100);
    const bool isFound = info.SetCommonInfo("no such file.csv", NSTQ::NSTQCore::SCDeclareConstant::SFT_CSV);
    return isFound && !reader.FileOpen(&info) && reader.GetErrorCode() == ERROR_FILE_NOT_FOUND &&
                   NSTQ::NSTQCore::SCDataAccessDefine::EXT_CSV[0] == 'c' && ::GetLastError() != ERROR_INVALID_HANDLE
               ? 0
               : 1;
}
