// A zip archive that is read in place: its entries by name and their contents. Encrypted entries are not read.
// Names are compared without regard to the case of ASCII letters, with '\' as '/', and without a leading '/'; a
// archive that names an entry twice is refused.
#pragma once

#include "providers/common/ByteSources.h"
#include "providers/zip/CZipEntryStream.h"

#include <memory>
#include <string_view>

namespace NSTQ::Providers {

class CZipArchive {
public:
    /// Reads the directory. Reader and streams share `input`. Throws CSourceError.
    explicit CZipArchive(std::shared_ptr<IRandomAccess> input);

    /// The entry of that name (in any case), or null. It stays valid as long as the reader lives.
    const SZipEntry* Find(std::string_view name) const;

    /// The contents of an entry, which may be read after the reader is gone. The stream throws CSourceError when they
    /// are damaged, differ from the stated size or checksum, or exceed `limits`.
    std::unique_ptr<IByteStream> Open(const SZipEntry& entry, const SInflateLimits& limits) const;

private:
    std::shared_ptr<IRandomAccess> m_input;
    std::vector<SZipEntry> m_entries; ///< by name, which is folded
};

} // namespace NSTQ::Providers
