#include "platform/errors/LastError.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/ErrorTable.h"
#include "platform/posix/SystemCall.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace NSTQ::Platform::Port {

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

DWORD Count(ssize_t transferred, DWORD& got) {
    got = transferred < 0 ? 0 : static_cast<DWORD>(transferred);
    return transferred < 0 ? LastCode() : ERROR_SUCCESS;
}

} // namespace

DWORD Read(TFile file, void* buffer, DWORD size, DWORD& got) {
    const int descriptor = DescriptorOf(file);
    return Count(TransferSome(descriptor, POLLIN, [&] { return ::read(descriptor, buffer, size); }), got);
}

DWORD ReadAt(TFile file, LONGLONG offset, void* buffer, DWORD size, DWORD& got) {
    return Count(RetryInterrupted([&] { return ::pread(DescriptorOf(file), buffer, size, offset); }), got);
}

DWORD Write(TFile file, const void* buffer, DWORD size, DWORD& written) {
    const int descriptor = DescriptorOf(file);
    written = 0;
    if (descriptor < 0)
        return ERROR_INVALID_HANDLE;
    while (written < size) {
        const ssize_t put = TransferSome(descriptor, POLLOUT, [&] {
            return ::write(descriptor, static_cast<const char*>(buffer) + written, size - written);
        });
        if (put < 0)
            return LastCode();
        // A device that accepts nothing and reports no error would cause an endless loop.
        if (put == 0)
            return ERROR_DISK_FULL;
        written += static_cast<DWORD>(put);
    }
    return ERROR_SUCCESS;
}

DWORD Seek(TFile file, LONGLONG distance, EOrigin origin, LONGLONG& position) {
    static_assert(sizeof(off_t) == sizeof(LONGLONG), "files above 2 GB need 64-bit positions");
    constexpr int origins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    position = ::lseek(DescriptorOf(file), distance, origins[static_cast<std::size_t>(origin)]);
    return position < 0 ? LastCode() : ERROR_SUCCESS;
}

DWORD Flush(TFile file) {
    // Some file systems do not support this call; then closing the file has to suffice.
    if (::fsync(DescriptorOf(file)) == 0 || errno == EINVAL || errno == ENOTSUP)
        return ERROR_SUCCESS;
    return LastCode();
}

DWORD Close(TFile file) {
    // Not repeated after an interruption: the descriptor is already closed and may be reused by another thread.
    if (::close(DescriptorOf(file)) == 0 || errno == EINTR)
        return ERROR_SUCCESS;
    return LastCode();
}

} // namespace NSTQ::Platform::Port
