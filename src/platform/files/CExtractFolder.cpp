#include "platform/files/CExtractFolder.h"

#include "platform/errors/LastError.h"
#include "platform/files/Path.h"

#include <algorithm>
#include <utility>

namespace NSTQ::Platform {

CExtractFolder::~CExtractFolder() {
    Port::Close(m_file);
    Port::Close(m_folder);
}

bool CExtractFolder::Create(const char* folder) {
    std::string path;
    return MakeSystemPath(folder, path) && Succeeds(Port::MakeRootFolder(path, m_folder));
}

/// Goes down to it; `folder` is then the root itself or one to be closed.
DWORD CExtractFolder::Enter(std::string_view path, Port::TFile& folder) const {
    DWORD code = ERROR_SUCCESS;
    folder = m_folder;
    for (std::size_t from = 0; code == ERROR_SUCCESS && from < path.size();) {
        const std::size_t end = std::min(path.find('/', from), path.size());
        const Port::TFile parent = folder;
        code = Port::EnterFolder(parent, std::string(path.substr(from, end - from)), folder);
        Leave(parent);
        from = end + 1;
    }
    return code;
}

void CExtractFolder::Leave(Port::TFile folder) const {
    if (folder != m_folder)
        Port::Close(folder);
}

bool CExtractFolder::MakeFolder(const std::string& path) {
    Port::TFile folder = Port::noFile;
    if (!Succeeds(Enter(path, folder)))
        return false;
    Leave(folder);
    return true;
}

bool CExtractFolder::MakeFile(const std::string& path) {
    const std::size_t separator = path.find_last_of('/');
    Port::TFile folder = Port::noFile;
    if (!Succeeds(Enter(separator == std::string::npos ? "" : path.substr(0, separator), folder)))
        return false;
    const DWORD code = Port::MakeFileIn(folder, path.substr(separator + 1), m_file);
    Leave(folder);
    if (code != ERROR_SUCCESS)
        m_file = Port::noFile;
    return Succeeds(code);
}

bool CExtractFolder::Write(std::span<const std::byte> bytes) {
    DWORD written = 0;
    return Succeeds(Port::Write(m_file, bytes.data(), static_cast<DWORD>(bytes.size()), written));
}

bool CExtractFolder::CloseFile() {
    return Succeeds(Port::Close(std::exchange(m_file, Port::noFile)));
}

} // namespace NSTQ::Platform
