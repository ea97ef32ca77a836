// The directory of a zip package and the contents of its entries.
//
// The central directory alone counts: sizes and places are taken from it, checked once when it is read, and never
// believed again from elsewhere. Zip64 packages are read; split and encrypted ones are not. A package is refused as a
// whole when its directory is damaged, names an entry twice, or has entries that share bytes, because such packages
// are made to be understood differently by different readers or to unfold without end.
// Names are compared without regard to the case of ASCII letters, with '\' as '/', and without a leading '/'.
#pragma once

#include "providers/common/IByteStream.h"
#include "providers/common/IRandomAccess.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Providers {

/// One file of a package.
struct SArchiveEntry {
    std::string_view strName; ///< folded as names are compared; lives as long as the reader
    std::uint64_t headerOffset;
    std::uint64_t compressedSize;
    std::uint64_t size; ///< as the directory claims it; streams stop with an error when it proves wrong
    std::uint32_t crc;
    std::uint16_t method;
    std::uint16_t flags;
};

/// How far an entry may unfold. Bytes are counted as they come.
struct SInflateLimits {
    std::uint64_t maxSize;  ///< bytes in all
    std::uint64_t freeSize; ///< so many bytes are allowed whatever the ratio
    std::uint64_t maxRatio; ///< above `freeSize`: bytes out for each byte in
};

class CZipArchive {
public:
    static constexpr std::size_t maxEntries = 1U << 18;
    static constexpr std::size_t maxDirectorySize = 1U << 26;

    /// Reads the directory. Reader and streams share `input`. Throws CSourceError.
    explicit CZipArchive(std::shared_ptr<IRandomAccess> input);

    /// The entry of that name (in any case), or null. It stays valid as long as the reader lives.
    const SArchiveEntry* Find(std::string_view name) const;
    const std::vector<SArchiveEntry>& GetEntries() const { return m_entries; }

    /// The contents of an entry, which may be read after the reader is gone. The stream throws CSourceError when they
    /// are damaged, differ from the claimed size or checksum, or unfold beyond `limits`.
    std::unique_ptr<IByteStream> Open(const SArchiveEntry& entry, const SInflateLimits& limits) const;

private:
    struct SDirectory {
        std::uint64_t offset;
        std::uint64_t size;
        std::uint64_t entryCount;
    };

    SDirectory FindDirectory() const;
    SDirectory ReadZip64Directory(std::uint64_t endOffset) const;
    void ReadEntries(const SDirectory& directory);
    std::size_t ReadEntry(std::size_t position, std::uint64_t directoryOffset);
    void CheckOverlaps(std::uint64_t directoryOffset) const;
    void SortByName();

    std::shared_ptr<IRandomAccess> m_pInput;
    std::vector<unsigned char> m_directory; ///< holds the names of the entries
    std::vector<SArchiveEntry> m_entries;   ///< by name
};

} // namespace NSTQ::Providers
