#include "platform/files/FolderSearch.h"

#include "platform/files/Descriptor.h"
#include "platform/files/ErrorTable.h"
#include "platform/files/Path.h"
#include "platform/files/SystemCall.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstring>

namespace NSTQ::Platform {

namespace {

DWORD AttributesOf(mode_t mode) {
    constexpr mode_t anyWrite = S_IWUSR | S_IWGRP | S_IWOTH;
    // Permission bits of a link mean nothing.
    if (S_ISLNK(mode))
        return FILE_ATTRIBUTE_REPARSE_POINT;
    const DWORD attributes =
        (S_ISDIR(mode) ? FILE_ATTRIBUTE_DIRECTORY : 0) | ((mode & anyWrite) == 0 ? FILE_ATTRIBUTE_READONLY : 0);
    return attributes == 0 ? FILE_ATTRIBUTE_NORMAL : attributes;
}

bool CopyName(const std::string& name, WIN32_FIND_DATAA& data) {
    if (name.size() >= sizeof data.cFileName)
        return false;
    std::memcpy(data.cFileName, name.c_str(), name.size() + 1);
    return true;
}

} // namespace

std::unique_ptr<CFolderSearch> CFolderSearch::Open(const std::string& systemPath) {
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
    // The object comes first: nothing can fail once it holds the stream.
    std::unique_ptr<CFolderSearch> search(new CFolderSearch(nullptr));
    CDescriptor descriptor(RetryInterrupted([&] { return ::open(systemPath.c_str(), flags); }));
    if (descriptor.IsOpen())
        search->m_pFolder = ::fdopendir(descriptor.Get());
    if (search->m_pFolder == nullptr) {
        // A missing folder is a missing path for the entries that were asked for.
        FailWith(errno == ENOENT ? ERROR_PATH_NOT_FOUND : ErrorCodeFromSystem(errno));
        return nullptr;
    }
    descriptor.Release();
    return search;
}

CFolderSearch::~CFolderSearch() {
    if (m_pFolder != nullptr)
        ::closedir(m_pFolder);
}

bool CFolderSearch::ReadEntry(WIN32_FIND_DATAA& data) {
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(m_pFolder);
        if (entry == nullptr && errno == EINTR)
            continue;
        if (entry == nullptr)
            return errno == 0 ? FailWith(ERROR_NO_MORE_FILES) : FailFromSystem();
        struct stat status {};
        const int folder = ::dirfd(m_pFolder);
        if (RetryInterrupted([&] { return ::fstatat(folder, entry->d_name, &status, AT_SYMLINK_NOFOLLOW); }) != 0) {
            // Gone since the folder was read.
            if (errno == ENOENT)
                continue;
            return FailFromSystem();
        }
        if (!CopyName(ConvertToAnsiName(entry->d_name), data))
            continue;
        data.dwFileAttributes = AttributesOf(status.st_mode);
        return true;
    }
}

} // namespace NSTQ::Platform
