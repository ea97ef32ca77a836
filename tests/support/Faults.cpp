#include "support/Faults.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <new>

namespace NSTQ::Tests::Faults {

namespace {

constinit thread_local std::array<Scope*, callCount> inForce{};
constinit std::atomic<std::ptrdiff_t> liveAllocations{0};

Scope*& InForce(Call call) {
    return inForce[static_cast<std::size_t>(call)];
}

/// True when the call is to fail; errno is set then.
bool Fails(Call call) {
    Scope* fault = InForce(call);
    if (fault == nullptr || !fault->Strike() || fault->Limit() != 0)
        return false;
    errno = fault->Error();
    return true;
}

/// As Fails; a short transfer gets its size cut instead.
bool FailsTransfer(Call call, std::size_t& size) {
    Scope* fault = InForce(call);
    if (fault == nullptr || !fault->Strike())
        return false;
    errno = fault->Error();
    size = std::min(size, fault->Limit());
    return fault->Limit() == 0;
}

} // namespace

Scope::Scope(Call call, std::size_t nth, int error, Times times)
    : m_eCall(call), m_uNth(nth), m_uLimit(0), m_iError(error), m_eTimes(times), m_pPrevious(InForce(call)) {
    InForce(call) = this;
}

Scope::Scope(Call call, std::size_t nth, Short limit, Times times) : Scope(call, nth, 0, times) {
    m_uLimit = std::max<std::size_t>(limit.bytes, 1);
}

Scope::~Scope() {
    InForce(m_eCall) = m_pPrevious;
}

bool Scope::Strike() {
    ++m_uCalls;
    return m_uCalls == m_uNth || (m_eTimes == Times::Always && m_uCalls > m_uNth);
}

std::ptrdiff_t LiveAllocations() {
    return liveAllocations;
}

std::size_t OpenDescriptors() {
    std::size_t count = 0;
    for (int descriptor = 0; descriptor < 1024; ++descriptor)
        count += ::fcntl(descriptor, F_GETFD) >= 0 ? 1U : 0U;
    return count;
}

} // namespace NSTQ::Tests::Faults

namespace {

using namespace NSTQ::Tests::Faults;

mode_t ModeOf(int flags, va_list arguments) {
    return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
}

} // namespace

// The linker leads a call of `name` to `__wrap_name` and one of `__real_name` to the system. Other names of the same
// call are led to the same wrapper (tests/support.cmake), which 64-bit systems allow.
extern "C" {

int __real_open(const char*, int, ...);
int __real_openat(int, const char*, int, ...);
int __real_close(int);
ssize_t __real_read(int, void*, size_t);
ssize_t __real_pread(int, void*, size_t, off_t);
ssize_t __real_write(int, const void*, size_t);
ssize_t __real_pwrite(int, const void*, size_t, off_t);
off_t __real_lseek(int, off_t, int);
int __real_stat(const char*, struct stat*);
int __real_lstat(const char*, struct stat*);
int __real_fstat(int, struct stat*);
int __real_fstatat(int, const char*, struct stat*, int);
int __real_ftruncate(int, off_t);
int __real_flock(int, int);
int __real_fcntl(int, int, ...);
int __real_dup(int);
int __real_unlink(const char*);
int __real_unlinkat(int, const char*, int);
int __real_rmdir(const char*);
int __real_mkdir(const char*, mode_t);
int __real_mkdirat(int, const char*, mode_t);
DIR* __real_opendir(const char*);
DIR* __real_fdopendir(int);
dirent* __real_readdir(DIR*);

int __wrap_open(const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return Fails(Call::Open) ? -1 : __real_open(path, flags, mode);
}
int __wrap_openat(int folder, const char* path, int flags, ...) {
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = ModeOf(flags, arguments);
    va_end(arguments);
    return Fails(Call::Open) ? -1 : __real_openat(folder, path, flags, mode);
}
int __wrap_close(int descriptor) {
    const bool fails = Fails(Call::Close);
    const int error = errno;
    const int result = __real_close(descriptor);
    if (!fails)
        return result;
    errno = error;
    return -1;
}

ssize_t __wrap_read(int descriptor, void* buffer, size_t size) {
    return FailsTransfer(Call::Read, size) ? -1 : __real_read(descriptor, buffer, size);
}
ssize_t __wrap_pread(int descriptor, void* buffer, size_t size, off_t at) {
    return FailsTransfer(Call::Read, size) ? -1 : __real_pread(descriptor, buffer, size, at);
}
ssize_t __wrap_write(int descriptor, const void* buffer, size_t size) {
    return FailsTransfer(Call::Write, size) ? -1 : __real_write(descriptor, buffer, size);
}
ssize_t __wrap_pwrite(int descriptor, const void* buffer, size_t size, off_t at) {
    return FailsTransfer(Call::Write, size) ? -1 : __real_pwrite(descriptor, buffer, size, at);
}

off_t __wrap_lseek(int descriptor, off_t distance, int origin) {
    return Fails(Call::Seek) ? -1 : __real_lseek(descriptor, distance, origin);
}
int __wrap_stat(const char* path, struct stat* status) {
    return Fails(Call::Stat) ? -1 : __real_stat(path, status);
}
int __wrap_lstat(const char* path, struct stat* status) {
    return Fails(Call::Stat) ? -1 : __real_lstat(path, status);
}
int __wrap_fstat(int descriptor, struct stat* status) {
    return Fails(Call::Stat) ? -1 : __real_fstat(descriptor, status);
}
int __wrap_fstatat(int folder, const char* path, struct stat* status, int flags) {
    return Fails(Call::Stat) ? -1 : __real_fstatat(folder, path, status, flags);
}
int __wrap_ftruncate(int descriptor, off_t size) {
    return Fails(Call::Truncate) ? -1 : __real_ftruncate(descriptor, size);
}
int __wrap_flock(int descriptor, int operation) {
    return Fails(Call::Lock) ? -1 : __real_flock(descriptor, operation);
}

// Every argument of fcntl fits a pointer, whatever the command takes.
int __wrap_fcntl(int descriptor, int command, ...) {
    va_list arguments;
    va_start(arguments, command);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    const bool duplicates = command == F_DUPFD || command == F_DUPFD_CLOEXEC;
    return duplicates && Fails(Call::Duplicate) ? -1 : __real_fcntl(descriptor, command, argument);
}
int __wrap_dup(int descriptor) {
    return Fails(Call::Duplicate) ? -1 : __real_dup(descriptor);
}

int __wrap_unlink(const char* path) {
    return Fails(Call::Unlink) ? -1 : __real_unlink(path);
}
int __wrap_unlinkat(int folder, const char* path, int flags) {
    const Call call = (flags & AT_REMOVEDIR) != 0 ? Call::RemoveFolder : Call::Unlink;
    return Fails(call) ? -1 : __real_unlinkat(folder, path, flags);
}
int __wrap_rmdir(const char* path) {
    return Fails(Call::RemoveFolder) ? -1 : __real_rmdir(path);
}
int __wrap_mkdir(const char* path, mode_t mode) {
    return Fails(Call::MakeFolder) ? -1 : __real_mkdir(path, mode);
}
int __wrap_mkdirat(int folder, const char* path, mode_t mode) {
    return Fails(Call::MakeFolder) ? -1 : __real_mkdirat(folder, path, mode);
}

DIR* __wrap_opendir(const char* path) {
    return Fails(Call::OpenFolder) ? nullptr : __real_opendir(path);
}
DIR* __wrap_fdopendir(int descriptor) {
    return Fails(Call::OpenFolder) ? nullptr : __real_fdopendir(descriptor);
}
dirent* __wrap_readdir(DIR* folder) {
    return Fails(Call::ReadFolder) ? nullptr : __real_readdir(folder);
}

} // extern "C"

namespace {

void* Allocate(std::size_t size, std::size_t alignment = 0) noexcept {
    if (Fails(Call::Allocate))
        return nullptr;
    const std::size_t wanted = std::max<std::size_t>(size, 1);
    void* block = alignment == 0 ? std::malloc(wanted)
                                 : std::aligned_alloc(alignment, (wanted + alignment - 1) / alignment * alignment);
    if (block != nullptr)
        ++liveAllocations;
    return block;
}

void* OrThrow(void* block) {
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}

void Free(void* block) noexcept {
    if (block != nullptr)
        --liveAllocations;
    std::free(block);
}

std::size_t Of(std::align_val_t alignment) {
    return static_cast<std::size_t>(alignment);
}

} // namespace

using TAlign = std::align_val_t;
using TNothrow = std::nothrow_t;

void* operator new(std::size_t size) {
    return OrThrow(Allocate(size));
}
void* operator new[](std::size_t size) {
    return OrThrow(Allocate(size));
}
void* operator new(std::size_t size, const TNothrow&) noexcept {
    return Allocate(size);
}
void* operator new[](std::size_t size, const TNothrow&) noexcept {
    return Allocate(size);
}
void* operator new(std::size_t size, TAlign alignment) {
    return OrThrow(Allocate(size, Of(alignment)));
}
void* operator new[](std::size_t size, TAlign alignment) {
    return OrThrow(Allocate(size, Of(alignment)));
}
void* operator new(std::size_t size, TAlign alignment, const TNothrow&) noexcept {
    return Allocate(size, Of(alignment));
}
void* operator new[](std::size_t size, TAlign alignment, const TNothrow&) noexcept {
    return Allocate(size, Of(alignment));
}
void operator delete(void* block) noexcept {
    Free(block);
}
void operator delete[](void* block) noexcept {
    Free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete(void* block, const TNothrow&) noexcept {
    Free(block);
}
void operator delete[](void* block, const TNothrow&) noexcept {
    Free(block);
}
void operator delete(void* block, TAlign) noexcept {
    Free(block);
}
void operator delete[](void* block, TAlign) noexcept {
    Free(block);
}
void operator delete(void* block, std::size_t, TAlign) noexcept {
    Free(block);
}
void operator delete[](void* block, std::size_t, TAlign) noexcept {
    Free(block);
}
void operator delete(void* block, TAlign, const TNothrow&) noexcept {
    Free(block);
}
void operator delete[](void* block, TAlign, const TNothrow&) noexcept {
    Free(block);
}
