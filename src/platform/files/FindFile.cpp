#include "platform/files/ErrorTable.h"
#include "platform/files/Files.h"
#include "platform/files/FolderSearch.h"
#include "platform/files/Path.h"

#include <string_view>

namespace NSTQ::Platform {

namespace {

/// Cuts "folder/*" down to "folder". Separators at the end would make the system follow a link there.
bool CutPattern(std::string& pattern) {
    if (!std::string_view(pattern).ends_with("/*"))
        return false;
    const std::size_t last = pattern.find_last_not_of('/', pattern.size() - 2);
    pattern.resize(last == std::string::npos ? 1 : last + 1);
    return true;
}

CFolderSearch* SearchOfHandle(HANDLE search) {
    return search == INVALID_HANDLE_VALUE ? nullptr : static_cast<CFolderSearch*>(search);
}

} // namespace

HANDLE FindFirstFileA(const char* pattern, WIN32_FIND_DATAA* data) {
    std::string folder;
    if (data == nullptr)
        FailWith(ERROR_INVALID_PARAMETER);
    else if (MakeSystemPath(pattern, folder)) {
        if (!CutPattern(folder))
            FailWith(ERROR_INVALID_NAME);
        else if (auto search = CFolderSearch::Open(folder); search != nullptr && search->ReadEntry(*data))
            return search.release();
    }
    return INVALID_HANDLE_VALUE;
}

bool FindNextFileA(HANDLE search, WIN32_FIND_DATAA* data) {
    CFolderSearch* folder = SearchOfHandle(search);
    if (folder == nullptr)
        return FailWith(ERROR_INVALID_HANDLE);
    if (data == nullptr)
        return FailWith(ERROR_INVALID_PARAMETER);
    return folder->ReadEntry(*data);
}

bool FindClose(HANDLE search) {
    CFolderSearch* folder = SearchOfHandle(search);
    if (folder == nullptr)
        return FailWith(ERROR_INVALID_HANDLE);
    delete folder;
    return true;
}

} // namespace NSTQ::Platform
