#include "support/Faults.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace NSTQ::Tests::Faults {

namespace {

/// True when the call is to fail; errno is set then. A short transfer gets another size instead.
bool Fails(Call call, std::size_t* size = nullptr) {
    const Scope* const fault = FindStriking(call);
    if (fault == nullptr)
        return false;
    errno = fault->Error();
    if (size != nullptr)
        *size = std::min(*size, fault->Limit());
    return fault->Limit() == 0;
}

} // namespace

std::size_t OpenDescriptors() {
    std::size_t count = 0;
    for (int descriptor = 0; descriptor < 1024; ++descriptor)
        count += ::fcntl(descriptor, F_GETFD) >= 0 ? 1U : 0U;
    return count;
}

} // namespace NSTQ::Tests::Faults

using namespace NSTQ::Tests::Faults;

/// Wraps a call that is made unchanged or returns `failed`.
#define TQC_WRAP(kind, failed, type, name, parameters, arguments)                                                    \
    type __real_##name parameters;                                                                                   \
    type __wrap_##name parameters {                                                                                  \
        return Fails(Call::kind) ? (failed) : __real_##name arguments;                                               \
    }
/// Wraps a transfer of `size` bytes.
#define TQC_WRAP_TRANSFER(kind, name, parameters, arguments)                                                         \
    ssize_t __real_##name parameters;                                                                                \
    ssize_t __wrap_##name parameters {                                                                               \
        return Fails(Call::kind, &size) ? -1 : __real_##name arguments;                                              \
    }

// The linker makes a call of `name` one of `__wrap_name`, and one of `__real_name` a call of the system. Other names
// of the same call get the same wrapper (tests/support.cmake), which is possible on 64-bit systems. There a wrapper
// may also take an argument that was not given, unless it is used: the mode of an open that creates nothing.
extern "C" {

TQC_WRAP(Open, -1, int, open, (const char* path, int flags, mode_t mode), (path, flags, mode))
TQC_WRAP(Open, -1, int, openat, (int folder, const char* path, int flags, mode_t mode), (folder, path, flags, mode))
TQC_WRAP(Seek, -1, off_t, lseek, (int descriptor, off_t distance, int origin), (descriptor, distance, origin))
TQC_WRAP(Stat, -1, int, stat, (const char* path, struct stat* status), (path, status))
TQC_WRAP(Stat, -1, int, lstat, (const char* path, struct stat* status), (path, status))
TQC_WRAP(Stat, -1, int, fstat, (int descriptor, struct stat* status), (descriptor, status))
TQC_WRAP(Stat, -1, int, fstatat, (int folder, const char* path, struct stat* status, int flags),
         (folder, path, status, flags))
TQC_WRAP(Truncate, -1, int, ftruncate, (int descriptor, off_t size), (descriptor, size))
TQC_WRAP(Lock, -1, int, flock, (int descriptor, int operation), (descriptor, operation))
TQC_WRAP(Duplicate, -1, int, dup, (int descriptor), (descriptor))
TQC_WRAP(Unlink, -1, int, unlink, (const char* path), (path))
TQC_WRAP(RemoveFolder, -1, int, rmdir, (const char* path), (path))
TQC_WRAP(MakeFolder, -1, int, mkdir, (const char* path, mode_t mode), (path, mode))
TQC_WRAP(MakeFolder, -1, int, mkdirat, (int folder, const char* path, mode_t mode), (folder, path, mode))
TQC_WRAP(OpenFolder, nullptr, DIR*, opendir, (const char* path), (path))
TQC_WRAP(OpenFolder, nullptr, DIR*, fdopendir, (int descriptor), (descriptor))
TQC_WRAP(ReadFolder, nullptr, dirent*, readdir, (DIR * folder), (folder))

TQC_WRAP_TRANSFER(Read, read, (int descriptor, void* buffer, size_t size), (descriptor, buffer, size))
TQC_WRAP_TRANSFER(Read, pread, (int descriptor, void* buffer, size_t size, off_t at), (descriptor, buffer, size, at))
TQC_WRAP_TRANSFER(Write, write, (int descriptor, const void* buffer, size_t size), (descriptor, buffer, size))
TQC_WRAP_TRANSFER(Write, pwrite, (int descriptor, const void* buffer, size_t size, off_t at),
                  (descriptor, buffer, size, at))

int __real_close(int);
int __wrap_close(int descriptor) {
    const bool fails = Fails(Call::Close);
    const int error = errno;
    const int result = __real_close(descriptor);
    if (!fails)
        return result;
    errno = error;
    return -1;
}

// Every argument of fcntl fits a pointer, whatever the command takes.
int __real_fcntl(int, int, void*);
int __wrap_fcntl(int descriptor, int command, void* argument) {
    const bool duplicates = command == F_DUPFD || command == F_DUPFD_CLOEXEC;
    return duplicates && Fails(Call::Duplicate) ? -1 : __real_fcntl(descriptor, command, argument);
}

int __real_unlinkat(int, const char*, int);
int __wrap_unlinkat(int folder, const char* path, int flags) {
    const Call call = (flags & AT_REMOVEDIR) != 0 ? Call::RemoveFolder : Call::Unlink;
    return Fails(call) ? -1 : __real_unlinkat(folder, path, flags);
}
} // extern "C"
