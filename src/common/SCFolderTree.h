// Folders with everything below them.
#pragma once

namespace NSTQ::NSTQCore {

class SCFolderTree {
public:
    /// Removes the folder at `pFolder` (text in the ANSI code page) and everything below it, whatever its names and
    /// depth; it needs two descriptors and no stack per level. Links are removed and never followed; if the folder
    /// itself is a link, it stays. A file without any write permission bit, which counts as read-only, stays with the
    /// folders above it, and so does what the system refuses to remove; the rest is removed. Returns whether the
    /// folder itself has been removed. Throws only std::bad_alloc, and then leaves a part.
    static bool Remove(const char* pFolder);
};

} // namespace NSTQ::NSTQCore
