// Folders with all that is below them.
#pragma once

namespace NSTQ::NSTQCore {

class SCFolderTree {
public:
    /// Removes the folder at `pFolder` (text in the ANSI code page) and everything below it, whatever its names and
    /// however deep; it takes two descriptors at a time and no stack for each level. Links are removed and never
    /// followed, be it the folder itself, which then stays. A file without any write permission bit, which is what
    /// read-only means here, stays with the folders above it, and so does what the system refuses to remove; the rest
    /// goes. Tells whether the folder itself is gone. Throws nothing but std::bad_alloc, and then leaves a part.
    static bool Remove(const char* pFolder);
};

} // namespace NSTQ::NSTQCore
