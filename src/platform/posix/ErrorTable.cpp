#include "platform/posix/ErrorTable.h"

#include "platform/errors/LastError.h"
#include "platform/posix/SystemCall.h"

#include <sys/stat.h>

namespace NSTQ::Platform::Port {

namespace {

struct SErrorPair {
    int error;
    DWORD code;
};

constexpr SErrorPair errorTable[] = {
    {ENOENT, ERROR_FILE_NOT_FOUND},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    // A cycle of links leads to no file.
    {ELOOP, ERROR_PATH_NOT_FOUND},
    {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
    {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
    {EACCES, ERROR_ACCESS_DENIED},
    {EPERM, ERROR_ACCESS_DENIED},
    {EISDIR, ERROR_ACCESS_DENIED},
    {EBADF, ERROR_INVALID_HANDLE},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {EROFS, ERROR_WRITE_PROTECT},
    {EWOULDBLOCK, ERROR_SHARING_VIOLATION},
    // A mount point that is in use, a program that is running: somebody else is using it.
    {EBUSY, ERROR_SHARING_VIOLATION},
    {ETXTBSY, ERROR_SHARING_VIOLATION},
    {ESPIPE, ERROR_INVALID_FUNCTION},
    // Exists but cannot be opened: a socket, a device without a driver.
    {ENXIO, ERROR_NOT_SUPPORTED},
    {ENODEV, ERROR_NOT_SUPPORTED},
    {EOPNOTSUPP, ERROR_NOT_SUPPORTED},
    {EEXIST, ERROR_FILE_EXISTS},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {EPIPE, ERROR_BROKEN_PIPE},
    {ENOSPC, ERROR_DISK_FULL},
    {EDQUOT, ERROR_DISK_FULL},
    // A file of the maximum size accepts no more bytes, like a full disk.
    {EFBIG, ERROR_DISK_FULL},
    {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
    {ENAMETOOLONG, ERROR_BUFFER_OVERFLOW},
    {EIO, ERROR_IO_DEVICE},
};

bool IsParentFolderThere(const std::string& path) {
    const std::size_t last = path.find_last_not_of('/');
    const std::size_t separator = last == std::string::npos ? last : path.find_last_of('/', last);
    if (separator == std::string::npos)
        return true;
    struct stat status {};
    const std::string parent = path.substr(0, separator + 1);
    return RetryInterrupted([&] { return ::stat(parent.c_str(), &status); }) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

DWORD ErrorCodeFromSystem(int error) {
    for (const SErrorPair& pair : errorTable)
        if (pair.error == error)
            return pair.code;
    return ERROR_IO_DEVICE;
}

DWORD PathErrorCodeFromSystem(int error, const std::string& path) {
    if (error == ENOENT && !IsParentFolderThere(path))
        return ERROR_PATH_NOT_FOUND;
    return ErrorCodeFromSystem(error);
}

DWORD LastCode() {
    return ErrorCodeFromSystem(errno);
}

DWORD LastCode(const std::string& path) {
    return PathErrorCodeFromSystem(errno, path);
}

} // namespace NSTQ::Platform::Port
