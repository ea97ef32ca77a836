#include "platform/errors/LastError.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/ErrorTable.h"
#include "platform/posix/SystemCall.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace NSTQ::Platform::Port {

namespace {

bool Reads(const SOpening& opening) {
    return opening.access != EAccess::Write;
}

bool Writes(const SOpening& opening) {
    return opening.access != EAccess::Read;
}

int OpenFlags(const SOpening& opening) {
    const int mode = Reads(opening) && Writes(opening) ? O_RDWR : Writes(opening) ? O_WRONLY : O_RDONLY;
    // A reader must not wait for a pipe that it will reject.
    return mode | O_CLOEXEC | O_NOCTTY | (Reads(opening) ? O_NONBLOCK : 0);
}

int OpenPath(const std::string& path, int flags) {
    constexpr mode_t anybodyLessUmask = 0666;
    return RetryInterrupted([&] { return ::open(path.c_str(), flags, anybodyLessUmask); });
}

/// Tries an existing file first, because only this shows whether there was one.
CDescriptor OpenOrCreate(const std::string& path, const SOpening& opening, bool& existed) {
    const int flags = OpenFlags(opening);
    existed = opening.disposition != EDisposition::CreateNew;
    int descriptor = existed ? OpenPath(path, flags) : OpenPath(path, flags | O_CREAT | O_EXCL);
    if (descriptor < 0 && errno == ENOENT && opening.disposition == EDisposition::CreateAlways) {
        existed = false;
        descriptor = OpenPath(path, flags | O_CREAT);
    }
    return CDescriptor(MoveAboveStandardStreams(descriptor));
}

/// The error code for a file of a type that is rejected, or 0.
DWORD CheckKind(const SOpening& opening, mode_t mode, bool existed) {
    constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    if (S_ISDIR(mode))
        return ERROR_ACCESS_DENIED;
    if (Reads(opening) && !S_ISREG(mode))
        return ERROR_NOT_SUPPORTED;
    // The system allows a privileged process to write to read-only files; Windows allows nobody to.
    if (Writes(opening) && existed && S_ISREG(mode) && (mode & anyWrite) == 0)
        return ERROR_ACCESS_DENIED;
    return ERROR_SUCCESS;
}

/// Only a lock that somebody else holds is a failure; file systems without locks return various errors.
bool TakeLock(int descriptor, EShare share) {
    const int operation = (share == EShare::Exclusive ? LOCK_EX : LOCK_SH) | LOCK_NB;
    return RetryInterrupted([&] { return ::flock(descriptor, operation); }) == 0 || errno != EWOULDBLOCK;
}

DWORD Prepare(int descriptor, const SOpening& opening, bool existed) {
    struct stat status {};
    if (RetryInterrupted([&] { return ::fstat(descriptor, &status); }) != 0)
        return LastCode();
    if (const DWORD code = CheckKind(opening, status.st_mode, existed); code != ERROR_SUCCESS)
        return code;
    if (!S_ISREG(status.st_mode))
        return ERROR_SUCCESS;
    if (!TakeLock(descriptor, opening.share))
        return ERROR_SHARING_VIOLATION;
    if (opening.disposition == EDisposition::CreateAlways &&
        RetryInterrupted([&] { return ::ftruncate(descriptor, 0); }) != 0)
        return LastCode();
    if (opening.isSequential)
        ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
    return ERROR_SUCCESS;
}

DWORD OpenAs(const std::string& path, int flags, TFile& file, mode_t mode = 0) {
    file = MoveAboveStandardStreams(
        RetryInterrupted([&] { return ::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY, mode); }));
    return file < 0 ? LastCode(path) : ERROR_SUCCESS;
}

} // namespace

DWORD Open(const std::string& path, const SOpening& opening, TFile& file, bool& existed) {
    CDescriptor opened = OpenOrCreate(path, opening, existed);
    if (!opened.IsOpen())
        return LastCode(path);
    if (const DWORD code = Prepare(opened.Get(), opening, existed); code != ERROR_SUCCESS)
        return code;
    file = opened.Release();
    return ERROR_SUCCESS;
}

DWORD OpenToRead(const std::string& path, bool mayWait, TFile& file) {
    return OpenAs(path, O_RDONLY | (mayWait ? 0 : O_NONBLOCK), file);
}

DWORD OpenDevice(const std::string& path, TFile& file) {
    // With O_CREAT the system rejects a pipe that another user has planted.
    return OpenAs(path, O_WRONLY | O_CREAT, file, S_IRUSR | S_IWUSR);
}

DWORD Duplicate(int number, EAccess access, TFile& copy) {
    const int mode = ::fcntl(number, F_GETFL);
    CDescriptor duplicate(mode < 0 ? -1 : DuplicateAboveStandardStreams(number));
    if (!duplicate.IsOpen())
        return LastCode();
    if (access != EAccess::Read && (mode & O_ACCMODE) == O_RDONLY)
        return ERROR_ACCESS_DENIED;
    copy = duplicate.Release();
    return ERROR_SUCCESS;
}

int NumberOf(TFile file) {
    return DescriptorOf(file);
}

TFile GetStandardStream(EStream stream) {
    return static_cast<TFile>(stream);
}

} // namespace NSTQ::Platform::Port
