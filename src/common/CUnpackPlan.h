// Which entry of an xtqf package is unpacked to which path. Checks names, types and stated sizes by the rules and
// limits of CUnZip.h.
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
    /// The size that the entry states, and the maximum that is unpacked.
    std::uint64_t size;
};

class CUnpackPlan {
public:
    /// False when a rule or limit forbids unpacking the archive. Call it once.
    bool Make(const Providers::CZipDirectory& directory);

    const std::vector<SPlannedEntry>& Entries() const { return m_entries; }

private:
    /// No two entries are in each other's way, and together they are not too many.
    bool FitsTogether() const;

    std::vector<SPlannedEntry> m_entries;
};

} // namespace NSTQ::NSTQCore
