// Questions about file paths. Paths are NUL-terminated texts in the ANSI code page.
#pragma once

#include "tqcAccess/Types.h"

namespace NSTQ::NSTQCore {

class SCFilePath {
public:
    /// The times of a file.
    enum EFileTimeType : DWORD { FTT_CREATE = 0, FTT_ACCESS = 1, FTT_UPDATE = 2 };

    /// Reads one time of the file at `path`. On failure returns false and sets `time` to 0; the cause is in
    /// GetLastError (87 for an unknown type). A link is followed. The file systems of Linux keep no reliable creation
    /// time, so FTT_CREATE gives the time of the last status change.
    static bool GetFileTime(const char* path, EFileTimeType type, FILETIME& time);

    /// True when `path` begins with a separator ('/' or '\'); on Windows also with a drive letter.
    static bool IsAbsolutePath(const char* path);

    /// True when a new file may be created under the path's last component: the component is not empty, "." or "..",
    /// has at most 255 bytes in UTF-8, and the whole path has at most 260 bytes and only characters that the code
    /// page can represent. Does not check whether the folder exists or the file is writable.
    static bool CanUseFileName(const char* path);
};

} // namespace NSTQ::NSTQCore
