#include "platform/files/FileHandle.h"

#include "platform/files/ErrorTable.h"
#include "platform/files/Files.h"
#include "platform/files/SystemCall.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace NSTQ::Platform {

namespace {

/// A standard stream may be a pipe that another process made non-blocking: if it is full or empty, wait. For a
/// regular file the same error means that somebody has locked it.
bool WaitFor(int descriptor, short event) {
    struct stat status {};
    if (RetryInterrupted([&] { return ::fstat(descriptor, &status); }) != 0 || S_ISREG(status.st_mode))
        return false;
    pollfd waiting{descriptor, event, 0};
    return RetryInterrupted([&] { return ::poll(&waiting, 1, -1); }) >= 0;
}

template <class TTransfer>
ssize_t TransferSome(int descriptor, short event, TTransfer transfer) {
    for (;;) {
        const ssize_t size = RetryInterrupted(transfer);
        if (size >= 0 || errno != EAGAIN)
            return size;
        if (!WaitFor(descriptor, event)) {
            errno = EAGAIN;
            return size;
        }
    }
}

} // namespace

bool ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read, void* overlapped) {
    if (read == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    *read = 0;
    if (overlapped != nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    const int descriptor = DescriptorOfHandle(file);
    const ssize_t got = TransferSome(descriptor, POLLIN, [&] { return ::read(descriptor, buffer, size); });
    if (got < 0)
        return FailFromSystem();
    *read = static_cast<DWORD>(got);
    return true;
}

bool ReadFileWhole(HANDLE file, void* buffer, DWORD size, DWORD* read) {
    DWORD got = 0;
    *read = 0;
    do {
        if (!ReadFile(file, static_cast<char*>(buffer) + *read, size - *read, &got, nullptr))
            return false;
        *read += got;
    } while (got > 0 && *read < size);
    return true;
}

bool WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* written, void* overlapped) {
    if (written == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    *written = 0;
    if (overlapped != nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    const int descriptor = DescriptorOfHandle(file);
    if (descriptor < 0)
        return FailWith(ERROR_INVALID_HANDLE);
    while (*written < size) {
        const ssize_t put = TransferSome(descriptor, POLLOUT, [&] {
            return ::write(descriptor, static_cast<const char*>(buffer) + *written, size - *written);
        });
        if (put < 0)
            return FailFromSystem();
        // A device that accepts nothing and reports no error would cause an endless loop.
        if (put == 0)
            return FailWith(ERROR_DISK_FULL);
        *written += static_cast<DWORD>(put);
    }
    return true;
}

bool SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position, DWORD method) {
    static_assert(sizeof(off_t) == sizeof(LONGLONG), "files above 2 GB need 64-bit positions");
    constexpr int origins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (method > FILE_END)
        return FailWith(ERROR_INVALID_PARAMETER);
    const off_t reached = ::lseek(DescriptorOfHandle(file), distance.QuadPart, origins[method]);
    if (reached < 0)
        return FailFromSystem();
    if (position != nullptr)
        position->QuadPart = reached;
    return true;
}

bool GetFileSizeEx(HANDLE file, LARGE_INTEGER* size) {
    if (size == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    struct stat status {};
    if (RetryInterrupted([&] { return ::fstat(DescriptorOfHandle(file), &status); }) != 0)
        return FailFromSystem();
    if (!S_ISREG(status.st_mode))
        return FailWith(ERROR_INVALID_FUNCTION);
    size->QuadPart = status.st_size;
    return true;
}

bool CloseHandle(HANDLE file) {
    // Not repeated after an interruption: the descriptor is already closed and may be reused by another thread.
    if (::close(DescriptorOfHandle(file)) == 0 || errno == EINTR)
        return true;
    return FailFromSystem();
}

} // namespace NSTQ::Platform
