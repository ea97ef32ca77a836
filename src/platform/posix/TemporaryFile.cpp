#include "platform/errors/LastError.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/ErrorTable.h"
#include "platform/posix/NewFileMode.h"
#include "platform/posix/SystemCall.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdio>
#include <cstdlib>

namespace NSTQ::Platform::Port {

namespace {

constexpr mode_t userOnly = 0600;

/// A path of the descriptor; unlike an empty path it can be linked without privilege.
std::string NameOfDescriptor(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

DWORD OpenAs(const std::string& path, int flags, TFile& file) {
    file =
        MoveAboveStandardStreams(RetryInterrupted([&] { return ::open(path.c_str(), flags | O_CLOEXEC, userOnly); }));
    return file < 0 ? LastCode(path) : ERROR_SUCCESS;
}

} // namespace

mode_t ModeOfNewFiles() {
    static const mode_t mode = [] {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        return 0666 & ~mask;
    }();
    return mode;
}

DWORD MakeTemporaryFile(TFile& file, std::string& path, bool& isNamed) {
    std::string folder;
    isNamed = false;
    if (const DWORD code = FindTemporaryFolder(folder); code != ERROR_SUCCESS)
        return code;
    // The separator, because the root has no name without it.
    if (OpenAs(folder + '/', O_RDWR | O_TMPFILE, file) != ERROR_SUCCESS) {
        // The file system has no files without a name.
        HoldInterruption();
        const DWORD code = MakeTemporaryFile("", file, path);
        if (code == ERROR_SUCCESS)
            ::unlink(path.c_str());
        ReleaseInterruption();
        if (code != ERROR_SUCCESS)
            return code;
    }
    path = NameOfDescriptor(DescriptorOf(file));
    return ERROR_SUCCESS;
}

DWORD MakeTemporaryFile(const std::string& extension, TFile& file, std::string& path) {
    if (const DWORD code = FindTemporaryFolder(path); code != ERROR_SUCCESS)
        return code;
    path += "/tqc-XXXXXX" + extension;
    file = MoveAboveStandardStreams(::mkostemps(path.data(), static_cast<int>(extension.size()), O_CLOEXEC));
    return file < 0 ? LastCode(path) : ERROR_SUCCESS;
}

DWORD MakeTemporaryLink(const std::string& original, const std::string& extension, std::string& path) {
    std::array<char, PATH_MAX> real{};
    if (::realpath(original.c_str(), real.data()) == nullptr)
        return LastCode(original);
    TFile file = noFile;
    if (const DWORD code = MakeTemporaryFile(extension, file, path); code != ERROR_SUCCESS)
        return code;
    Close(file);
    // The name belongs to this program: the permissions of the folder prevent others from using it meanwhile.
    if (::unlink(path.c_str()) != 0 || ::symlink(real.data(), path.c_str()) != 0)
        return LastCode(path);
    return ERROR_SUCCESS;
}

DWORD MakeNamelessFile(const std::string& target, TFile& file) {
    const std::size_t folder = target.find_last_of('/');
    const std::string path = folder == std::string::npos ? "." : target.substr(0, folder + 1);
    if (const DWORD code = OpenAs(path, O_WRONLY | O_TMPFILE, file); code != ERROR_SUCCESS)
        return code;
    if (::access(NameOfDescriptor(DescriptorOf(file)).c_str(), F_OK) == 0)
        return ERROR_SUCCESS;
    // It could not be given a name later.
    Close(file);
    return ERROR_NOT_SUPPORTED;
}

DWORD MakeHiddenFile(const std::string& path, TFile& file) {
    return OpenAs(path, O_WRONLY | O_CREAT | O_EXCL, file);
}

DWORD GiveName(TFile file, const std::string& path) {
    const std::string name = NameOfDescriptor(DescriptorOf(file));
    return ::linkat(AT_FDCWD, name.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0 ? ERROR_SUCCESS
                                                                                            : LastCode(path);
}

/// The owner first, because changing it may clear bits of the mode. Without the permission to change the owner the
/// file belongs to this user.
void TakeOverOwner(TFile file, const std::string& target, std::uint32_t& permissions) {
    struct stat status {};
    permissions = ModeOfNewFiles();
    if (::stat(target.c_str(), &status) != 0)
        return;
    constexpr mode_t all = 07777;
    const bool owned = ::fchown(DescriptorOf(file), status.st_uid, status.st_gid) == 0;
    permissions = status.st_mode & (owned ? all : mode_t{0777});
}

DWORD SetPermissions(TFile file, std::uint32_t permissions) {
    return ::fchmod(DescriptorOf(file), permissions) == 0 ? ERROR_SUCCESS : LastCode();
}

DWORD MoveOver(TFile /*file*/, const std::string& path, const std::string& target) {
    return std::rename(path.c_str(), target.c_str()) == 0 ? ERROR_SUCCESS : LastCode(target);
}

} // namespace NSTQ::Platform::Port
