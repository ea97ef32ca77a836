#include "platform/files/Descriptor.h"
#include "platform/files/ErrorTable.h"
#include "platform/files/FileHandle.h"
#include "platform/files/Files.h"
#include "platform/files/Path.h"
#include "platform/files/SystemCall.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <charconv>
#include <optional>
#include <string_view>

namespace NSTQ::Platform {

namespace {

struct SRequest {
    DWORD access;
    DWORD share;
    DWORD disposition;
    DWORD flags;

    bool Reads() const { return (access & GENERIC_READ) != 0; }
    bool Writes() const { return (access & GENERIC_WRITE) != 0; }
    bool IsValid() const {
        constexpr DWORD knownAccess = GENERIC_READ | GENERIC_WRITE;
        constexpr DWORD knownShare = FILE_SHARE_READ | FILE_SHARE_WRITE;
        constexpr DWORD knownFlags = FILE_FLAG_SEQUENTIAL_SCAN | FILE_ATTRIBUTE_NORMAL;
        return access != 0 && (access & ~knownAccess) == 0 && (share & ~knownShare) == 0 &&
               (flags & ~knownFlags) == 0 && disposition >= CREATE_NEW && disposition <= OPEN_EXISTING;
    }
    int OpenFlags() const {
        const int mode = Reads() && Writes() ? O_RDWR : Writes() ? O_WRONLY : O_RDONLY;
        // A reader must not wait for a pipe that it will reject.
        return mode | O_CLOEXEC | O_NOCTTY | (Reads() ? O_NONBLOCK : 0);
    }
};

int Open(const std::string& path, int flags) {
    constexpr mode_t anybodyLessUmask = 0666;
    return RetryInterrupted([&] { return ::open(path.c_str(), flags, anybodyLessUmask); });
}

/// Tries an existing file first, because only this shows whether there was one.
CDescriptor OpenFile(const std::string& path, const SRequest& request, bool& existed) {
    const int flags = request.OpenFlags();
    existed = request.disposition != CREATE_NEW;
    int descriptor = existed ? Open(path, flags) : Open(path, flags | O_CREAT | O_EXCL);
    if (descriptor < 0 && errno == ENOENT && request.disposition == CREATE_ALWAYS) {
        existed = false;
        descriptor = Open(path, flags | O_CREAT);
    }
    return CDescriptor(MoveAboveStandardStreams(descriptor));
}

/// The error code for a file of a type that is rejected, or 0.
DWORD CheckKind(const SRequest& request, mode_t mode, bool existed) {
    constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    if (S_ISDIR(mode))
        return ERROR_ACCESS_DENIED;
    if (request.Reads() && !S_ISREG(mode))
        return ERROR_NOT_SUPPORTED;
    // The system allows a privileged process to write to read-only files; Windows allows nobody to.
    if (request.Writes() && existed && S_ISREG(mode) && (mode & anyWrite) == 0)
        return ERROR_ACCESS_DENIED;
    return ERROR_SUCCESS;
}

/// Only a lock that somebody else holds is a failure; file systems without locks return various errors.
bool TakeLock(int descriptor, DWORD share) {
    const int operation = (share == 0 ? LOCK_EX : LOCK_SH) | LOCK_NB;
    return RetryInterrupted([&] { return ::flock(descriptor, operation); }) == 0 || errno != EWOULDBLOCK;
}

bool PrepareFile(int descriptor, const SRequest& request, bool existed) {
    struct stat status {};
    if (RetryInterrupted([&] { return ::fstat(descriptor, &status); }) != 0)
        return FailFromSystem();
    if (const DWORD code = CheckKind(request, status.st_mode, existed); code != ERROR_SUCCESS)
        return FailWith(code);
    if (!S_ISREG(status.st_mode))
        return true;
    if (!TakeLock(descriptor, request.share))
        return FailWith(ERROR_SHARING_VIOLATION);
    if (request.disposition == CREATE_ALWAYS && RetryInterrupted([&] { return ::ftruncate(descriptor, 0); }) != 0)
        return FailFromSystem();
    if ((request.flags & FILE_FLAG_SEQUENTIAL_SCAN) != 0)
        ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
    return true;
}

/// The descriptor of a path such as "/dev/stdout".
std::optional<int> FindOpenDescriptor(std::string_view path) {
    constexpr std::string_view folder = "/dev/fd/";
    if (path == "/dev/stdout")
        return STDOUT_FILENO;
    if (path == "/dev/stderr")
        return STDERR_FILENO;
    if (!path.starts_with(folder))
        return std::nullopt;
    int descriptor = -1;
    const auto [end, error] = std::from_chars(path.data() + folder.size(), path.data() + path.size(), descriptor);
    if (error != std::errc{} || end != path.data() + path.size() || descriptor < 0)
        return std::nullopt;
    return descriptor;
}

HANDLE DuplicateForWriting(int descriptor, const SRequest& request) {
    const int mode = ::fcntl(descriptor, F_GETFL);
    CDescriptor copy(mode < 0 ? -1 : DuplicateAboveStandardStreams(descriptor));
    if (!copy.IsOpen())
        FailFromSystem();
    else if (request.disposition == CREATE_NEW)
        FailWith(ERROR_FILE_EXISTS);
    else if ((mode & O_ACCMODE) == O_RDONLY)
        FailWith(ERROR_ACCESS_DENIED);
    else
        return HandleOfDescriptor(copy.Release());
    return INVALID_HANDLE_VALUE;
}

} // namespace

HANDLE CreateFileA(const char* path, DWORD access, DWORD share, const void* securityAttributes, DWORD disposition,
                   DWORD flags, HANDLE templateFile) {
    const SRequest request{access, share, disposition, flags};
    if (securityAttributes != nullptr || templateFile != nullptr || !request.IsValid()) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_HANDLE_VALUE;
    }
    std::string systemPath;
    if (!MakeSystemPath(path, systemPath))
        return INVALID_HANDLE_VALUE;
    if (!request.Reads())
        if (const std::optional<int> descriptor = FindOpenDescriptor(systemPath))
            return DuplicateForWriting(*descriptor, request);

    bool existed = false;
    CDescriptor file = OpenFile(systemPath, request, existed);
    if (!file.IsOpen()) {
        FailFromSystem(systemPath);
        return INVALID_HANDLE_VALUE;
    }
    if (!PrepareFile(file.Get(), request, existed))
        return INVALID_HANDLE_VALUE;
    if (disposition == CREATE_ALWAYS)
        SetLastError(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return HandleOfDescriptor(file.Release());
}

HANDLE DuplicateDescriptor(int descriptor) {
    const int copy = DuplicateAboveStandardStreams(descriptor);
    if (copy >= 0)
        return HandleOfDescriptor(copy);
    FailFromSystem();
    return INVALID_HANDLE_VALUE;
}

} // namespace NSTQ::Platform
