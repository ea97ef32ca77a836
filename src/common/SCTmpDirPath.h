// Names for temporary files and folders.
//
// The temporary folder is the one that TMPDIR names, when that is absolute and usable: a folder (or a link to one)
// in which files can be created and whose entries other users cannot replace (not writable for everybody, or with the
// sticky bit). Otherwise it is /tmp, which must be usable in the same sense.
//
// Everybody can write to /tmp: somebody who wants to read or replace the content could create a folder with a fixed
// name first. So each user has a folder of their own, "tqc-<user number>", which contains the sub-folders. Every
// level is created with mode 0700, and an existing one is used only if it is a real folder, belongs to the user and
// nobody else has any permission. A user folder that does not meet this (or has such a level in it) is skipped, and
// one with a random suffix is created.
#pragma once

#include "tqcAccess/Types.h"

namespace NSTQ::NSTQCore {

class SCTmpDirPath {
public:
    /// Writes to `pPath` (room for `dwSize` bytes with the NUL) the full path of something that does not exist yet,
    /// inside `pSubFolder` below the temporary folder: `pPrefix`, the process number and, as the unique part, a
    /// number that also goes into `dwNumber`. No two calls of a process return the same path (until 2^32 calls), nor
    /// do two processes; nothing is created at the path. The sub-folder is created if it is missing, and stays.
    ///
    /// `pSubFolder` has `dwSubFolderLen` bytes (a NUL before ends it; null means none), '\' or '/' between its parts
    /// and, if wanted, at its end. `pPrefix` (null means none) has no separator. Both are texts in the ANSI code
    /// page, and so is the result, whose separators are '/'; what the code page cannot represent is escaped (see
    /// Path.h).
    ///
    /// Returns false on failure, with the cause in GetLastError (122 when the buffer is too small, 87 for a
    /// sub-folder or prefix that leads elsewhere, such as ".."); `pPath` is then an empty text, if it has room for
    /// one, and `dwNumber` is 0. May be called from every thread.
    static bool GetTmpFileName(char* pPath, DWORD dwSize, DWORD& dwNumber, const char* pSubFolder,
                               DWORD dwSubFolderLen, const char* pPrefix);
};

} // namespace NSTQ::NSTQCore
