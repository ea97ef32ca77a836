// Files that are opened by one name in an open folder, which only the system's own interface below CreateFileW can
// do: nobody can put a link in the place of a folder above meanwhile.
#pragma once

#include "platform/windows/System.h"

#include <winternl.h>

namespace NSTQ::Platform::Port {

struct SNativeOpening {
    ACCESS_MASK access;
    ULONG disposition; ///< FILE_OPEN, FILE_OPEN_IF or FILE_CREATE
    ULONG options;     ///< besides those that keep it from following links and make it synchronous
};

/// For folders in which others will be opened.
inline constexpr ACCESS_MASK folderAccess =
    FILE_LIST_DIRECTORY | FILE_TRAVERSE | FILE_ADD_FILE | FILE_ADD_SUBDIRECTORY | FILE_READ_ATTRIBUTES | SYNCHRONIZE;

/// Opens or creates what `name` is in `folder`; a link itself, not what it leads to.
DWORD OpenIn(HANDLE folder, const std::wstring& name, const SNativeOpening& opening, CHandle& file);

/// Whether it is a folder and no link.
bool IsRealFolder(HANDLE file);

} // namespace NSTQ::Platform::Port
