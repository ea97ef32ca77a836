// The directory of a zip archive, read strictly: an archive that two programs could understand differently is
// refused. Takes archives with and without 64-bit sizes; the whole archive must be one file that begins with the
// archive and ends with it.
#pragma once

#include "providers/common/CByteReader.h"
#include "providers/zip/CZipInput.h"

#include <string>
#include <vector>

namespace NSTQ::Providers {

/// One entry as the directory has it.
struct SZipEntry {
    /// The bytes as they are stored.
    std::string name;
    std::uint16_t flags;
    std::uint16_t method;
    /// The low half are DOS attributes, the high half is a Unix mode or 0.
    std::uint32_t attributes;
    std::uint64_t size;
    std::uint64_t packedSize;
    std::uint64_t headerPosition;

    static constexpr std::uint16_t FLAG_ENCRYPTED = 0x0001;
    static constexpr std::uint16_t FLAG_UTF8 = 0x0800;

    bool IsEncrypted() const { return (flags & FLAG_ENCRYPTED) != 0; }
    bool IsNameUtf8() const { return (flags & FLAG_UTF8) != 0; }
};

class CZipDirectory {
public:
    /// Reads and checks the directory and the header of every entry. Returns false for a damaged or cut archive, one
    /// with more than `maxEntries` entries or a directory of more than `maxSize` bytes, one in parts or with a hidden
    /// directory, and one whose entries overlap or disagree with their headers. Call it once.
    bool Read(const CZipInput& input, std::size_t maxEntries, std::size_t maxSize);

    /// In the directory's order.
    const std::vector<SZipEntry>& Entries() const { return m_vecEntries; }

private:
    struct SEnd;

    static bool FindEnd(const CZipInput& input, SEnd& end);
    static bool ReadEnd64(const CZipInput& input, SEnd& end);
    static bool ReadSizes64(std::span<const unsigned char> extra, SZipEntry& entry);
    static bool ReadHeader(const CZipInput& input, const SZipEntry& entry, std::uint64_t& dataPosition);
    bool TakeEntry(CByteReader& reader);
    bool CheckHeaders(const CZipInput& input, std::uint64_t directoryPosition) const;

    std::vector<SZipEntry> m_vecEntries;
};

} // namespace NSTQ::Providers
