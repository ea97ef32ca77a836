// What will be unpacked where: an archive's entries with their names, kinds and claimed sizes checked. The rules and
// caps are those of CUnZip.h.
#pragma once

#include "providers/zip/CZipDirectory.h"

#include <string>
#include <vector>

namespace NSTQ::NSTQCore {

/// One step of a plan; steps and the directory's entries have the same order.
struct SPlannedEntry {
    /// Relative, in the system's form ("a/b/c"), without a separator at its end.
    std::string path;
    bool isFolder;
    /// What the entry claims, and so the most that it may give.
    std::uint64_t size;
};

class CPackagePlan {
public:
    /// False when a rule or cap forbids unpacking the archive. Call it once.
    bool Make(const Providers::CZipDirectory& directory);

    const std::vector<SPlannedEntry>& Entries() const { return m_vecEntries; }

private:
    bool HasConflicts() const;

    std::vector<SPlannedEntry> m_vecEntries;
};

} // namespace NSTQ::NSTQCore
