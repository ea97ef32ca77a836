#include "platform/errors/LastError.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/ErrorTable.h"
#include "platform/posix/SystemCall.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Platform::Port {

namespace {

/// A folder on the way down, identified by the two numbers.
struct SLevel {
    std::string name;
    dev_t device = 0;
    ino_t number = 0;
    std::vector<std::string> folders; ///< those in it that are still to be removed
};

/// Fails if the last component of `path` is a link.
CDescriptor OpenFolder(int parent, const char* path) {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
    return CDescriptor(RetryInterrupted([&] { return ::openat(parent, path, flags); }));
}

void RemoveFolder(int parent, const char* path) {
    RetryInterrupted([&] { return ::unlinkat(parent, path, AT_REMOVEDIR); });
}

/// Lists all of them before one is removed, because a listing may skip entries when the folder changes meanwhile.
std::vector<std::string> ListNames(int folder) {
    std::vector<std::string> names;
    CDescriptor own = OpenFolder(folder, ".");
    const std::unique_ptr<DIR, decltype([](DIR* stream) { ::closedir(stream); })> stream(
        own.IsOpen() ? ::fdopendir(own.Get()) : nullptr);
    if (stream == nullptr)
        return names;
    own.Release();
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(stream.get());
        if (entry == nullptr && errno == EINTR)
            continue;
        if (entry == nullptr)
            return names;
        if (std::string_view name = entry->d_name; name != "." && name != "..")
            names.emplace_back(name);
    }
}

/// Traverses a tree from the given folder, downwards and back.
class CTreeRemoval {
public:
    explicit CTreeRemoval(CDescriptor root) : m_folder(std::move(root)) { Enter({}); }

    void Run() {
        while (m_levels.size() > 1 || !m_levels.back().folders.empty()) {
            if (!m_levels.back().folders.empty())
                GoDown();
            else if (!GoUp())
                return;
        }
    }

private:
    /// Removes everything but folders from the open one, and notes the folders in it.
    void Enter(std::string name) {
        constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
        SLevel level{.name = std::move(name), .folders = {}};
        struct stat status {};
        if (RetryInterrupted([&] { return ::fstat(m_folder.Get(), &status); }) == 0) {
            level.device = status.st_dev;
            level.number = status.st_ino;
        }
        for (std::string& entry : ListNames(m_folder.Get())) {
            const auto look = [&] { return ::fstatat(m_folder.Get(), entry.c_str(), &status, AT_SYMLINK_NOFOLLOW); };
            if (RetryInterrupted(look) != 0)
                continue;
            if (S_ISDIR(status.st_mode))
                level.folders.push_back(std::move(entry));
            else if (S_ISLNK(status.st_mode) || (status.st_mode & anyWrite) != 0)
                RetryInterrupted([&] { return ::unlinkat(m_folder.Get(), entry.c_str(), 0); });
        }
        m_levels.push_back(std::move(level));
    }

    void GoDown() {
        std::string name = std::move(m_levels.back().folders.back());
        m_levels.back().folders.pop_back();
        CDescriptor folder = OpenFolder(m_folder.Get(), name.c_str());
        if (!folder.IsOpen()) {
            // A folder that cannot be listed may still be empty.
            RemoveFolder(m_folder.Get(), name.c_str());
            return;
        }
        m_folder = std::move(folder);
        Enter(std::move(name));
    }

    /// False when the parent is not the folder that this one was reached from: somebody has moved it.
    bool GoUp() {
        const std::string name = std::move(m_levels.back().name);
        m_levels.pop_back();
        const SLevel& level = m_levels.back();
        CDescriptor folder = OpenFolder(m_folder.Get(), "..");
        struct stat status {};
        if (!folder.IsOpen() || RetryInterrupted([&] { return ::fstat(folder.Get(), &status); }) != 0 ||
            status.st_dev != level.device || status.st_ino != level.number)
            return false;
        m_folder = std::move(folder);
        RemoveFolder(m_folder.Get(), name.c_str());
        return true;
    }

    CDescriptor m_folder; ///< that of the last level
    std::vector<SLevel> m_levels;
};

} // namespace

DWORD RemoveTree(const std::string& path) {
    // A separator at the end would make the system follow a link there.
    const std::string name = path.substr(0, path.find_last_not_of('/') + 1);
    if (CDescriptor root = OpenFolder(AT_FDCWD, name.c_str()); root.IsOpen())
        CTreeRemoval(std::move(root)).Run();
    return RetryInterrupted([&] { return ::rmdir(name.c_str()); }) == 0 ? ERROR_SUCCESS : LastCode(name);
}

} // namespace NSTQ::Platform::Port
