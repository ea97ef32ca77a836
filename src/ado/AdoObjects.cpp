#include "AdoObjects.h"

#include "platform/automation/WipeMemory.h"
#include "platform/codepage/Transcode.h"

namespace NSTQ::NSTQCore {

using namespace NSTQ::Platform;

void OpenConnection(_Connection& connection, const char* pConnectString) {
    const std::string_view text(pConnectString == nullptr ? "" : pConnectString);
    if (!IsDefinedInAnsi(text))
        throw _com_error(E_FAIL, "the connection string holds bytes that the code page does not define");
    const CBstr source = BstrFromAnsi(text);
    const CWipedMemory wiped(source.Get(), SysStringLen(source.Get()) * sizeof(WCHAR)); // it may hold a password
    const CBstr empty = BstrFromAnsi({});
    connection.Open(source.Get(), empty.Get(), empty.Get(), adConnectUnspecified);
}

} // namespace NSTQ::NSTQCore
