#include "platform/windows/System.h"

#include <ntsecapi.h>

namespace NSTQ::Platform::Port {

DWORD FindTemporaryFolder(std::string& folder) {
    wchar_t path[MAX_PATH + 1];
    const DWORD length = ::GetTempPathW(MAX_PATH + 1, path);
    if (length == 0 || length > MAX_PATH)
        return ERROR_PATH_NOT_FOUND;
    folder = FromWidePath({path, length});
    folder.resize(folder.find_last_not_of('/') + 1);
    SStatus status;
    const bool isFolder = GetStatus(folder, status) == ERROR_SUCCESS && status.kind == EKind::Folder;
    return isFolder ? ERROR_SUCCESS : ERROR_PATH_NOT_FOUND;
}

const char* GetTemporaryFolderVariable() {
    return "TMP";
}

std::string GetUserTag() {
    // The last number of the identifier tells the users of a machine apart, and paths stay short.
    const std::wstring identifier = GetUserIdentifier();
    const std::string tag = FromWide(std::wstring_view(identifier).substr(identifier.find_last_of(L'-') + 1));
    return tag.empty() ? "0" : tag;
}

std::uint32_t GetProcessNumber() {
    return ::GetCurrentProcessId();
}

std::uint32_t MakeRandomNumber() {
    ULONG number = 0;
    if (!::RtlGenRandom(&number, sizeof number))
        number = ::GetTickCount() * 0x9E3779B1U;
    return number;
}

} // namespace NSTQ::Platform::Port
