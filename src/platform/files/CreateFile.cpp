#include "platform/files/FileHandle.h"
#include "platform/files/Files.h"
#include "platform/files/Path.h"

#include <charconv>
#include <optional>
#include <string_view>

namespace NSTQ::Platform {

namespace {

constexpr DWORD readAndWrite = GENERIC_READ | GENERIC_WRITE;

bool IsValid(DWORD access, DWORD share, DWORD disposition, DWORD flags) {
    constexpr DWORD knownShare = FILE_SHARE_READ | FILE_SHARE_WRITE;
    constexpr DWORD knownFlags = FILE_FLAG_SEQUENTIAL_SCAN | FILE_ATTRIBUTE_NORMAL;
    return access != 0 && (access & ~readAndWrite) == 0 && (share & ~knownShare) == 0 && (flags & ~knownFlags) == 0 &&
           disposition >= CREATE_NEW && disposition <= OPEN_EXISTING;
}

Port::EAccess ToAccess(DWORD access) {
    return access == readAndWrite    ? Port::EAccess::ReadAndWrite
           : access == GENERIC_WRITE ? Port::EAccess::Write
                                     : Port::EAccess::Read;
}

Port::EDisposition ToDisposition(DWORD disposition) {
    return disposition == CREATE_NEW      ? Port::EDisposition::CreateNew
           : disposition == CREATE_ALWAYS ? Port::EDisposition::CreateAlways
                                          : Port::EDisposition::OpenExisting;
}

/// The number of an open file in a path such as "/dev/stdout".
std::optional<int> FindOpenNumber(std::string_view path) {
    constexpr std::string_view folder = "/dev/fd/";
    if (path == "/dev/stdout")
        return 1;
    if (path == "/dev/stderr")
        return 2;
    if (!path.starts_with(folder))
        return std::nullopt;
    int number = -1;
    const auto [end, error] = std::from_chars(path.data() + folder.size(), path.data() + path.size(), number);
    if (error != std::errc{} || end != path.data() + path.size() || number < 0)
        return std::nullopt;
    return number;
}

HANDLE DuplicateAs(int number, Port::EAccess access, bool mustBeNew = false) {
    Port::TFile copy = Port::noFile;
    if (!Succeeds(Port::Duplicate(number, access, copy)))
        return INVALID_HANDLE_VALUE;
    if (!mustBeNew)
        return HandleOf(copy);
    Port::Close(copy);
    SetLastError(ERROR_FILE_EXISTS);
    return INVALID_HANDLE_VALUE;
}

} // namespace

HANDLE CreateFileA(const char* path, DWORD access, DWORD share, const void* securityAttributes, DWORD disposition,
                   DWORD flags, HANDLE templateFile) {
    if (securityAttributes != nullptr || templateFile != nullptr || !IsValid(access, share, disposition, flags)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    std::string systemPath;
    if (!MakeSystemPath(path, systemPath))
        return INVALID_HANDLE_VALUE;
    if (access == GENERIC_WRITE)
        if (const std::optional<int> number = FindOpenNumber(systemPath))
            return DuplicateAs(*number, Port::EAccess::Write, disposition == CREATE_NEW);

    Port::TFile file = Port::noFile;
    bool existed = false;
    const Port::SOpening opening{.access = ToAccess(access),
                                 .share = share == 0 ? Port::EShare::Exclusive : Port::EShare::Shared,
                                 .disposition = ToDisposition(disposition),
                                 .isSequential = (flags & FILE_FLAG_SEQUENTIAL_SCAN) != 0};
    if (!Succeeds(Port::Open(systemPath, opening, file, existed)))
        return INVALID_HANDLE_VALUE;
    if (disposition == CREATE_ALWAYS)
        SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return HandleOf(file);
}

HANDLE DuplicateDescriptor(int descriptor) {
    return DuplicateAs(descriptor, Port::EAccess::Read);
}

} // namespace NSTQ::Platform
