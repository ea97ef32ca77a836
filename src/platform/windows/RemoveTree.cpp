#include "platform/windows/NativeFile.h"
#include "platform/windows/System.h"

#include <cstddef>
#include <cstring>
#include <vector>

namespace NSTQ::Platform::Port {

namespace {

constexpr ACCESS_MASK removalAccess =
    FILE_LIST_DIRECTORY | FILE_TRAVERSE | FILE_READ_ATTRIBUTES | DELETE | SYNCHRONIZE;

/// Marks an open file, link or empty folder for removal, at once if the system can do that while it is open
/// elsewhere.
bool Remove(HANDLE file) {
    FILE_DISPOSITION_INFO_EX atOnce{};
    atOnce.Flags = FILE_DISPOSITION_FLAG_DELETE | FILE_DISPOSITION_FLAG_POSIX_SEMANTICS;
    if (::SetFileInformationByHandle(file, dispositionAtOnce, &atOnce, sizeof atOnce))
        return true;
    const DWORD error = ::GetLastError();
    if (error != ERROR_INVALID_PARAMETER && error != ERROR_INVALID_FUNCTION && error != ERROR_NOT_SUPPORTED &&
        error != ERROR_CALL_NOT_IMPLEMENTED)
        return false;
    FILE_DISPOSITION_INFO whenClosed{};
    whenClosed.DeleteFile = TRUE;
    return ::SetFileInformationByHandle(file, FileDispositionInfo, &whenClosed, sizeof whenClosed);
}

/// One folder on the way down, with the names of its folders that are still to be entered.
struct SLevel {
    CHandle folder;
    std::vector<std::wstring> folders;
};

bool IsItselfOrParent(std::wstring_view name) {
    return name == L"." || name == L"..";
}

void RemoveFileIn(HANDLE folder, const std::wstring& name) {
    CHandle file;
    if (OpenIn(folder, name, {DELETE | FILE_READ_ATTRIBUTES | SYNCHRONIZE, FILE_OPEN, 0}, file) == ERROR_SUCCESS &&
        !IsRealFolder(file.Get()))
        Remove(file.Get());
}

/// Removes the files and links of the folder and remembers its folders.
void EmptyOfFiles(SLevel& level) {
    alignas(FILE_ID_BOTH_DIR_INFO) std::byte buffer[16384];
    std::vector<std::wstring> files;
    while (::GetFileInformationByHandleEx(level.folder.Get(), FileIdBothDirectoryInfo, buffer, sizeof buffer)) {
        for (std::size_t at = 0;;) {
            const auto* const entry = reinterpret_cast<const FILE_ID_BOTH_DIR_INFO*>(buffer + at);
            std::wstring name(entry->FileName, entry->FileNameLength / sizeof(wchar_t));
            constexpr DWORD kind = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
            if ((entry->FileAttributes & kind) != FILE_ATTRIBUTE_DIRECTORY)
                files.push_back(std::move(name));
            else if (!IsItselfOrParent(name))
                level.folders.push_back(std::move(name));
            if (entry->NextEntryOffset == 0)
                break;
            at += entry->NextEntryOffset;
        }
    }
    for (const std::wstring& name : files)
        RemoveFileIn(level.folder.Get(), name);
}

/// Goes down by open folders only, so that no link can be put in the place of one; the stack of levels is in memory.
bool RemoveBelow(CHandle root) {
    std::vector<SLevel> levels;
    levels.push_back({std::move(root), {}});
    EmptyOfFiles(levels.back());
    for (;;) {
        SLevel& level = levels.back();
        if (level.folders.empty()) {
            const bool isRemoved = Remove(level.folder.Get());
            levels.pop_back();
            if (levels.empty())
                return isRemoved;
            continue;
        }
        CHandle folder;
        const DWORD code =
            OpenIn(level.folder.Get(), level.folders.back(), {removalAccess, FILE_OPEN, FILE_DIRECTORY_FILE}, folder);
        level.folders.pop_back();
        if (code != ERROR_SUCCESS || !IsRealFolder(folder.Get()))
            continue;
        levels.push_back({std::move(folder), {}});
        EmptyOfFiles(levels.back());
    }
}

} // namespace

DWORD RemoveTree(const std::string& path) {
    std::wstring wide;
    // A separator at the end would make the system follow a link there.
    if (const DWORD code = ToWidePath(path.substr(0, path.find_last_not_of('/') + 1), wide); code != ERROR_SUCCESS)
        return code;
    CHandle root(::CreateFileW(wide.c_str(), removalAccess, shareAll, nullptr, OPEN_EXISTING,
                               FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!root.IsOpen())
        return LastCode();
    if (!IsRealFolder(root.Get()))
        return ERROR_PATH_NOT_FOUND;
    return RemoveBelow(std::move(root)) ? ERROR_SUCCESS : LastCode();
}

} // namespace NSTQ::Platform::Port
