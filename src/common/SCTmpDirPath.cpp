#include "common/SCTmpDirPath.h"

#include "platform/Port.h"
#include "platform/errors/LastError.h"
#include "platform/files/Path.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::NSTQCore {

namespace {

namespace Port = Platform::Port;

std::string ToHex(std::uint32_t number, std::size_t digits = 1) {
    constexpr std::string_view hexDigits = "0123456789abcdef";
    std::string text;
    for (; number != 0 || text.size() < digits; number >>= 4)
        text.insert(text.begin(), hexDigits[number & 0x0F]);
    return text;
}

/// Creates every level below `userFolder` and returns the path of the last one in `folder`.
bool MakeLevels(const std::string& userFolder, const std::vector<std::string>& levels, std::string& folder) {
    folder = userFolder;
    bool made = Platform::Succeeds(Port::MakePrivateFolder(folder));
    for (std::size_t i = 0; made && i < levels.size(); ++i) {
        folder += '/' + levels[i];
        made = Platform::Succeeds(Port::MakePrivateFolder(folder));
    }
    return made;
}

/// Another name helps only if somebody else occupies this one; it does not help on a full disk.
bool MakeFolder(const std::vector<std::string>& levels, std::string& folder) {
    constexpr int maxAttempts = 16;
    std::string temporaryFolder;
    if (!Platform::Succeeds(Port::FindTemporaryFolder(temporaryFolder)))
        return false;
    const std::string userFolder = temporaryFolder + "/tqc-" + Port::GetUserTag();
    bool made = MakeLevels(userFolder, levels, folder);
    for (int i = 0; !made && Platform::GetLastError() == Platform::ERROR_ACCESS_DENIED && i < maxAttempts; ++i)
        made = MakeLevels(userFolder + '-' + ToHex(Port::MakeRandomNumber(), 8), levels, folder);
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
        if (level.empty() || level == "." || level == ".." || !Port::IsPlainName(level))
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
    return (name.find('/') == std::string::npos && Port::IsPlainName(name)) ||
           Platform::FailWith(Platform::ERROR_INVALID_PARAMETER);
}

/// The counter makes names unique within a process, its random start among processes that share a folder but are in
/// different process namespaces.
bool FindFreePath(const std::string& start, std::string& path, DWORD& number) {
    static std::atomic<std::uint32_t> counter{Port::MakeRandomNumber()};
    constexpr int maxAttempts = 1000;
    for (int i = 0; i < maxAttempts; ++i) {
        number = counter++;
        path = start + ToHex(Port::GetProcessNumber()) + '-' + ToHex(number, 8);
        Port::SStatus status;
        const DWORD code = Port::GetLinkStatus(path, status);
        if (code != Platform::ERROR_SUCCESS)
            return code == Platform::ERROR_FILE_NOT_FOUND || Platform::FailWith(code);
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
