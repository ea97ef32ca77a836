#include "common/SCTmpDirPath.h"

#include "platform/files/ErrorTable.h"
#include "platform/files/Files.h"
#include "platform/files/Path.h"
#include "platform/files/SystemCall.h"

#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::NSTQCore {

namespace {

std::string ToHex(std::uint32_t number, std::size_t digits = 1) {
    constexpr std::string_view hexDigits = "0123456789abcdef";
    std::string text;
    for (; number != 0 || text.size() < digits; number >>= 4)
        text.insert(text.begin(), hexDigits[number & 0x0F]);
    return text;
}

std::uint32_t MakeRandom() {
    std::uint32_t number = 0;
    if (::getrandom(&number, sizeof number, GRND_NONBLOCK) == sizeof number)
        return number;
    // Early at boot there is none yet. The clock suffices, because the number need not be secret.
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<std::uint32_t>(now.tv_nsec) * 0x9E3779B1U;
}

bool IsUsableTemporaryFolder(const char* path) {
    struct stat status {};
    if (path == nullptr || path[0] != '/' || Platform::RetryInterrupted([&] { return ::stat(path, &status); }) != 0 ||
        !S_ISDIR(status.st_mode))
        return false;
    const bool othersMayExchange = (status.st_mode & S_IWOTH) != 0 && (status.st_mode & S_ISVTX) == 0;
    return !othersMayExchange && ::access(path, W_OK | X_OK) == 0;
}

/// Returns it without a separator at the end.
bool FindTemporaryFolder(std::string& folder) {
    const std::array candidates{static_cast<const char*>(::secure_getenv("TMPDIR")), "/tmp"};
    const auto* found = std::find_if(candidates.begin(), candidates.end(), IsUsableTemporaryFolder);
    if (found == candidates.end())
        return Platform::FailWith(Platform::ERROR_PATH_NOT_FOUND);
    folder = *found;
    folder.resize(folder.find_last_not_of('/') + 1);
    return true;
}

/// An existing folder must be one that only this user can have created and can read.
bool MakePrivateFolder(const std::string& path) {
    constexpr mode_t userOnly = 0700;
    constexpr mode_t anybodyElse = 0077;
    if (Platform::RetryInterrupted([&] { return ::mkdir(path.c_str(), userOnly); }) == 0)
        return true;
    struct stat status {};
    if (errno != EEXIST || Platform::RetryInterrupted([&] { return ::lstat(path.c_str(), &status); }) != 0)
        return Platform::FailFromSystem(path);
    if (!S_ISDIR(status.st_mode) || status.st_uid != ::geteuid() || (status.st_mode & anybodyElse) != 0)
        return Platform::FailWith(Platform::ERROR_ACCESS_DENIED);
    return true;
}

/// Creates every level below `userFolder` and returns the path of the last one in `folder`.
bool MakeLevels(const std::string& userFolder, const std::vector<std::string>& levels, std::string& folder) {
    folder = userFolder;
    bool made = MakePrivateFolder(folder);
    for (std::size_t i = 0; made && i < levels.size(); ++i) {
        folder += '/' + levels[i];
        made = MakePrivateFolder(folder);
    }
    return made;
}

/// Another name helps only if somebody else occupies this one; it does not help on a full disk.
bool MakeFolder(const std::vector<std::string>& levels, std::string& folder) {
    constexpr int maxAttempts = 16;
    std::string temporaryFolder;
    if (!FindTemporaryFolder(temporaryFolder))
        return false;
    const std::string userFolder = temporaryFolder + "/tqc-" + std::to_string(::geteuid());
    bool made = MakeLevels(userFolder, levels, folder);
    for (int i = 0; !made && Platform::GetLastError() == Platform::ERROR_ACCESS_DENIED && i < maxAttempts; ++i)
        made = MakeLevels(userFolder + '-' + ToHex(MakeRandom(), 8), levels, folder);
    return made;
}

/// Splits a text in the ANSI code page into the names of its levels in the system's form. Returns false if one of
/// them does not lead downwards.
bool SplitLevels(const std::string& subFolder, std::vector<std::string>& levels) {
    std::string path;
    if (subFolder.empty())
        return true;
    if (!Platform::MakeSystemPath(subFolder.c_str(), path))
        return false;
    for (std::size_t from = 0; from < path.size();) {
        const std::size_t end = std::min(path.find('/', from), path.size());
        const std::string level = path.substr(from, end - from);
        if (level.empty() || level == "." || level == "..")
            return Platform::FailWith(Platform::ERROR_INVALID_PARAMETER);
        levels.push_back(level);
        from = end + 1;
    }
    return true;
}

bool ConvertPrefix(const char* prefix, std::string& name) {
    if (prefix == nullptr || *prefix == '\0')
        return true;
    if (!Platform::MakeSystemPath(prefix, name))
        return false;
    return name.find('/') == std::string::npos || Platform::FailWith(Platform::ERROR_INVALID_PARAMETER);
}

/// The counter makes names unique within a process, its random start among processes that share a folder but are in
/// different process namespaces.
bool FindFreePath(const std::string& start, std::string& path, DWORD& number) {
    static std::atomic<std::uint32_t> counter{MakeRandom()};
    constexpr int maxAttempts = 1000;
    for (int i = 0; i < maxAttempts; ++i) {
        number = counter++;
        path = start + ToHex(static_cast<std::uint32_t>(::getpid())) + '-' + ToHex(number, 8);
        struct stat status {};
        if (Platform::RetryInterrupted([&] { return ::lstat(path.c_str(), &status); }) != 0)
            return errno == ENOENT || Platform::FailFromSystem(path);
    }
    return Platform::FailWith(Platform::ERROR_FILE_EXISTS);
}

} // namespace

bool SCTmpDirPath::GetTmpFileName(char* pPath, DWORD dwSize, DWORD& dwNumber, const char* pSubFolder,
                                  DWORD dwSubFolderLen, const char* pPrefix) {
    dwNumber = 0;
    if (pPath == nullptr || dwSize == 0)
        return Platform::FailWith(Platform::ERROR_INVALID_PARAMETER);
    pPath[0] = '\0';
    const std::string subFolder(pSubFolder != nullptr ? pSubFolder : "",
                                pSubFolder != nullptr ? ::strnlen(pSubFolder, dwSubFolderLen) : 0);
    std::vector<std::string> levels;
    std::string name;
    std::string folder;
    std::string path;
    DWORD number = 0;
    if (!SplitLevels(subFolder, levels) || !ConvertPrefix(pPrefix, name) || !MakeFolder(levels, folder) ||
        !FindFreePath(folder + '/' + name, path, number))
        return false;
    const std::string ansiPath = Platform::ConvertToAnsiName(path);
    if (ansiPath.size() >= dwSize)
        return Platform::FailWith(Platform::ERROR_INSUFFICIENT_BUFFER);
    std::memcpy(pPath, ansiPath.c_str(), ansiPath.size() + 1);
    dwNumber = number;
    return true;
}

} // namespace NSTQ::NSTQCore
