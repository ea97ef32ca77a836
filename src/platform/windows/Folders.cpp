#include "platform/windows/NativeFile.h"
#include "platform/windows/System.h"

#include <aclapi.h>
#include <sddl.h>

#include <algorithm>

namespace NSTQ::Platform::Port {

namespace {

DWORD MakeFolderWith(const std::string& path, SECURITY_ATTRIBUTES* rights) {
    std::wstring wide;
    if (const DWORD code = ToWidePath(path, wide); code != ERROR_SUCCESS)
        return code;
    return Result(::CreateDirectoryW(wide.c_str(), rights));
}

bool IsIdentifier(PSID identifier, const std::wstring& wanted) {
    wchar_t* text = nullptr;
    if (!::ConvertSidToStringSidW(identifier, &text))
        return false;
    const bool isEqual = wanted == text;
    ::LocalFree(text);
    return isEqual;
}

/// The user, or who can read everything anyway: the system and the administrators.
bool IsTrusted(PSID identifier, const std::wstring& user) {
    return IsIdentifier(identifier, user) || ::IsWellKnownSid(identifier, WinLocalSystemSid) ||
           ::IsWellKnownSid(identifier, WinBuiltinAdministratorsSid);
}

bool GrantsOnlyTrusted(PACL list, const std::wstring& user) {
    // Without a list everybody has every right.
    if (list == nullptr)
        return false;
    for (DWORD i = 0; i < list->AceCount; ++i) {
        void* entry = nullptr;
        if (!::GetAce(list, i, &entry))
            return false;
        const auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
        const BYTE kind = allowed->Header.AceType;
        if (kind == ACCESS_DENIED_ACE_TYPE)
            continue;
        if (kind != ACCESS_ALLOWED_ACE_TYPE ||
            !IsTrusted(const_cast<DWORD*>(&allowed->SidStart), user)) // NOLINT: the parameter is not const there
            return false;
    }
    return true;
}

/// Of a real folder that is open.
bool IsPrivate(HANDLE folder) {
    PSID owner = nullptr;
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (::GetSecurityInfo(folder, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &owner,
                          nullptr, &list, nullptr, &descriptor) != ERROR_SUCCESS)
        return false;
    const std::wstring user = GetUserIdentifier();
    const bool isPrivate = IsTrusted(owner, user) && GrantsOnlyTrusted(list, user);
    ::LocalFree(descriptor);
    return isPrivate;
}

} // namespace

DWORD MakeFolder(const std::string& path) {
    return MakeFolderWith(path, nullptr);
}

DWORD MakePrivateFolder(const std::string& path) {
    CPrivateRights rights;
    const DWORD code = MakeFolderWith(path, rights.Get());
    if (code != ERROR_FILE_EXISTS)
        return code;
    std::wstring wide;
    if (const DWORD failure = ToWidePath(path, wide); failure != ERROR_SUCCESS)
        return failure;
    const CHandle folder(::CreateFileW(wide.c_str(), READ_CONTROL | FILE_READ_ATTRIBUTES, shareAll, nullptr,
                                       OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                                       nullptr));
    if (!folder.IsOpen())
        return LastCode();
    return IsRealFolder(folder.Get()) && IsPrivate(folder.Get()) ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

DWORD MakeRootFolder(const std::string& path, TFile& folder) {
    CPrivateRights rights;
    if (const DWORD code = MakeFolderWith(path, rights.Get()); code != ERROR_SUCCESS)
        return code;
    std::wstring wide;
    if (const DWORD code = ToWidePath(path, wide); code != ERROR_SUCCESS)
        return code;
    CHandle opened(::CreateFileW(wide.c_str(), folderAccess, shareAll, nullptr, OPEN_EXISTING,
                                 FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!opened.IsOpen())
        return LastCode();
    if (!IsRealFolder(opened.Get()))
        return ERROR_PATH_NOT_FOUND;
    folder = FileOfHandle(opened.Release());
    return ERROR_SUCCESS;
}

DWORD EnterFolder(TFile parent, const std::string& name, TFile& folder) {
    CHandle opened;
    const DWORD code =
        OpenIn(HandleOfFile(parent), ToWide(name), {folderAccess, FILE_OPEN_IF, FILE_DIRECTORY_FILE}, opened);
    if (code != ERROR_SUCCESS)
        return code;
    if (!IsRealFolder(opened.Get()))
        return ERROR_PATH_NOT_FOUND;
    folder = FileOfHandle(opened.Release());
    return ERROR_SUCCESS;
}

DWORD MakeFileIn(TFile folder, const std::string& name, TFile& file) {
    CHandle opened;
    const DWORD code = OpenIn(HandleOfFile(folder), ToWide(name),
                              {GENERIC_WRITE | SYNCHRONIZE, FILE_CREATE, FILE_NON_DIRECTORY_FILE}, opened);
    if (code == ERROR_SUCCESS)
        file = FileOfHandle(opened.Release());
    return code;
}

DWORD RemoveFile(const std::string& path) {
    std::wstring wide;
    if (const DWORD code = ToWidePath(path, wide); code != ERROR_SUCCESS)
        return code;
    const DWORD attributes = ::GetFileAttributesW(wide.c_str());
    constexpr DWORD folderLink = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
    const bool isFolderLink = attributes != INVALID_FILE_ATTRIBUTES && (attributes & folderLink) == folderLink;
    return Result(isFolderLink ? ::RemoveDirectoryW(wide.c_str()) : ::DeleteFileW(wide.c_str()));
}

} // namespace NSTQ::Platform::Port
