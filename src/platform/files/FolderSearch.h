// A folder that is being listed: what stands behind a search handle.
#pragma once

#include "platform/files/Files.h"

#include <dirent.h>

#include <memory>
#include <string>

namespace NSTQ::Platform {

class CFolderSearch {
public:
    /// Opens the folder at a system path. Returns null on failure and sets the last error.
    static std::unique_ptr<CFolderSearch> Open(const std::string& systemPath);

    CFolderSearch(const CFolderSearch&) = delete;
    CFolderSearch& operator=(const CFolderSearch&) = delete;
    ~CFolderSearch();

    /// Gives the next entry whose name fits `data`. Returns false on failure, or at the end with 18 as the last
    /// error.
    bool ReadEntry(WIN32_FIND_DATAA& data);

private:
    explicit CFolderSearch(DIR* folder) : m_pFolder(folder) {}

    DIR* m_pFolder;
};

} // namespace NSTQ::Platform
