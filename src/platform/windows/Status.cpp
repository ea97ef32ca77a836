#include "platform/windows/System.h"

#include <winioctl.h>

#include <array>
#include <cstring>

namespace NSTQ::Platform::Port {

namespace {

using TFileTime = ::FILETIME;

NSTQ::FILETIME ToFileTime(const TFileTime& time) {
    return {time.dwLowDateTime, time.dwHighDateTime};
}

/// Whether a reparse point leads to another name. Others, such as files that are kept in a cloud, are what they seem.
bool IsLink(HANDLE file, DWORD attributes) {
    FILE_ATTRIBUTE_TAG_INFO tag{};
    return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           ::GetFileInformationByHandleEx(file, FileAttributeTagInfo, &tag, sizeof tag) &&
           IsReparseTagNameSurrogate(tag.ReparseTag);
}

/// Without the identity, in place of which the handle itself stands: no other open file has the same.
DWORD GetUnidentifiedStatus(HANDLE file, SStatus& status) {
    FILE_STANDARD_INFO standard{};
    FILE_BASIC_INFO basic{};
    if (!::GetFileInformationByHandleEx(file, FileStandardInfo, &standard, sizeof standard) ||
        !::GetFileInformationByHandleEx(file, FileBasicInfo, &basic, sizeof basic))
        return LastCode();
    const auto time = [](const LARGE_INTEGER& value) {
        return NSTQ::FILETIME{value.LowPart, static_cast<DWORD>(value.HighPart)};
    };
    status.kind = standard.Directory ? EKind::Folder : EKind::Regular;
    status.isReadOnly = !standard.Directory && (basic.FileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
    status.size = standard.EndOfFile.QuadPart;
    status.device = ~std::uint64_t{0};
    status.number = static_cast<std::uint64_t>(FileOfHandle(file));
    status.createTime = time(basic.CreationTime);
    status.accessTime = time(basic.LastAccessTime);
    status.updateTime = time(basic.LastWriteTime);
    return ERROR_SUCCESS;
}

/// Some file systems, and Wine for a standard stream that is a file, do not tell the identity.
DWORD GetDiskStatus(HANDLE file, SStatus& status) {
    BY_HANDLE_FILE_INFORMATION information{};
    if (!::GetFileInformationByHandle(file, &information))
        return GetUnidentifiedStatus(file, status);
    const DWORD attributes = information.dwFileAttributes;
    const bool isFolder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    status.kind = IsLink(file, attributes) ? EKind::Link : isFolder ? EKind::Folder : EKind::Regular;
    // For a folder the attribute means something else.
    status.isReadOnly = !isFolder && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    status.size = LONGLONG{information.nFileSizeHigh} << 32 | information.nFileSizeLow;
    status.device = information.dwVolumeSerialNumber;
    status.number = std::uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow;
    status.createTime = ToFileTime(information.ftCreationTime);
    status.accessTime = ToFileTime(information.ftLastAccessTime);
    status.updateTime = ToFileTime(information.ftLastWriteTime);
    return ERROR_SUCCESS;
}

DWORD GetStatusOf(HANDLE file, SStatus& status) {
    status = {};
    switch (::GetFileType(file)) {
    case FILE_TYPE_DISK:
        return GetDiskStatus(file, status);
    case FILE_TYPE_CHAR:
        status.kind = EKind::Device;
        return ERROR_SUCCESS;
    case FILE_TYPE_PIPE:
        status.kind = EKind::Pipe;
        return ERROR_SUCCESS;
    default:
        return ::GetLastError() == ERROR_SUCCESS ? ERROR_SUCCESS : LastCode();
    }
}

/// Neither needs a right to the content nor minds who else has the file open.
DWORD GetStatusAt(const std::string& path, DWORD flags, SStatus& status) {
    std::wstring wide;
    if (const DWORD code = ToWidePath(path, wide); code != ERROR_SUCCESS)
        return code;
    // A console is not opened for its status.
    if (wide.starts_with(L"\\\\.\\") && ::_wcsnicmp(wide.c_str() + 4, L"con", 3) == 0) {
        status = {};
        status.kind = EKind::Device;
        return ERROR_SUCCESS;
    }
    const CHandle file(::CreateFileW(wide.c_str(), FILE_READ_ATTRIBUTES, shareAll, nullptr, OPEN_EXISTING,
                                     FILE_FLAG_BACKUP_SEMANTICS | flags, nullptr));
    return file.IsOpen() ? GetStatusOf(file.Get(), status) : LastCode();
}

/// The beginning of what the system stores for a symbolic link; the texts follow.
struct SLinkData {
    DWORD tag;
    WORD dataSize;
    WORD reserved;
    WORD targetAt, targetSize;
    WORD shownAt, shownSize; ///< in bytes, as the user gave it
    DWORD flags;
};
constexpr DWORD relativeLink = 1;

/// False if the path is no symbolic link.
bool ReadTarget(const std::string& path, std::wstring& target, bool& isRelative) {
    std::wstring wide;
    if (ToWidePath(path, wide) != ERROR_SUCCESS)
        return false;
    const CHandle link(::CreateFileW(wide.c_str(), FILE_READ_ATTRIBUTES, shareAll, nullptr, OPEN_EXISTING,
                                     FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    std::array<unsigned char, MAXIMUM_REPARSE_DATA_BUFFER_SIZE> data;
    DWORD size = 0;
    if (!link.IsOpen() || !::DeviceIoControl(link.Get(), FSCTL_GET_REPARSE_POINT, nullptr, 0, data.data(),
                                             static_cast<DWORD>(data.size()), &size, nullptr))
        return false;
    SLinkData head{};
    if (size < sizeof head)
        return false;
    std::memcpy(&head, data.data(), sizeof head);
    if (head.tag != IO_REPARSE_TAG_SYMLINK || head.shownSize == 0 ||
        sizeof head + head.shownAt + head.shownSize > size)
        return false;
    target.resize(head.shownSize / sizeof(wchar_t));
    std::memcpy(target.data(), data.data() + sizeof head + head.shownAt, target.size() * sizeof(wchar_t));
    isRelative = (head.flags & relativeLink) != 0;
    return true;
}

} // namespace

DWORD GetStatus(const std::string& path, SStatus& status) {
    return GetStatusAt(path, 0, status);
}

DWORD GetLinkStatus(const std::string& path, SStatus& status) {
    return GetStatusAt(path, FILE_FLAG_OPEN_REPARSE_POINT, status);
}

DWORD GetStatus(TFile file, SStatus& status) {
    return file == noFile ? ERROR_INVALID_HANDLE : GetStatusOf(HandleOfFile(file), status);
}

DWORD CheckAccess(const std::string& path, EAccess access) {
    constexpr DWORD rights[] = {GENERIC_READ, GENERIC_WRITE, GENERIC_READ | GENERIC_WRITE};
    std::wstring wide;
    if (const DWORD code = ToWidePath(path, wide); code != ERROR_SUCCESS)
        return code;
    const CHandle file(::CreateFileW(wide.c_str(), rights[static_cast<std::size_t>(access)], shareAll, nullptr,
                                     OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    return file.IsOpen() ? ERROR_SUCCESS : LastCode();
}

bool ReadLink(const std::string& path, std::string& next, bool& isPlanted) {
    std::wstring target;
    bool isRelative = false;
    if (!ReadTarget(path, target, isRelative))
        return false;
    // The system lets only privileged users make links, and those in folders of everybody are none of its traps.
    isPlanted = false;
    next = isRelative ? path.substr(0, path.find_last_of('/') + 1) : "";
    next += FromWidePath(target);
    return true;
}

bool ToLocalTime(const NSTQ::FILETIME& time, SLocalTime& local) {
    constexpr LONGLONG stepsPerMinute = 600'000'000;
    const TFileTime there{time.dwLowDateTime, time.dwHighDateTime};
    TFileTime shifted{};
    SYSTEMTIME universal{};
    SYSTEMTIME here{};
    if ((time.dwLowDateTime == 0 && time.dwHighDateTime == 0) || !::FileTimeToSystemTime(&there, &universal) ||
        !::SystemTimeToTzSpecificLocalTime(nullptr, &universal, &here) || !::SystemTimeToFileTime(&here, &shifted))
        return false;
    const auto steps = [](const TFileTime& value) {
        return static_cast<LONGLONG>(std::uint64_t{value.dwHighDateTime} << 32 | value.dwLowDateTime);
    };
    // The conversion keeps milliseconds only.
    const LONGLONG difference = steps(shifted) - steps(there);
    const LONGLONG half = difference < 0 ? -stepsPerMinute / 2 : stepsPerMinute / 2;
    local = {here.wYear,
             here.wMonth,
             here.wDay,
             here.wHour,
             here.wMinute,
             here.wSecond,
             static_cast<int>((difference + half) / stepsPerMinute)};
    return true;
}

} // namespace NSTQ::Platform::Port
