// The directory of a zip archive, read strictly: an archive that two programs could interpret differently, or that
// decompresses endlessly, is rejected. Only the directory counts: sizes and positions are taken from it, checked once
// and never read elsewhere. Accepts archives with and without 64-bit sizes; the whole archive must
// be one file that begins with the archive.
#pragma once

#include "providers/common/ByteSources.h"
#include "providers/common/CByteReader.h"

#include <string>
#include <vector>

namespace NSTQ::Providers {

/// One entry of the directory.
struct SZipEntry {
    /// The stored bytes.
    std::string name;
    std::uint16_t flags;
    std::uint16_t method;       ///< of compression; `aes` when `aesMethod` has that
    std::uint16_t modifiedTime; ///< the time of day in the form of DOS
    std::uint32_t crc;
    /// The low half are DOS attributes, the high half is a Unix mode or 0.
    std::uint32_t attributes;
    std::uint64_t size; ///< as stated
    std::uint64_t packedSize;
    std::uint64_t headerPosition;
    std::uint64_t dataPosition;
    /// Of WinZip's AES (else 0): 1, or 2 if the checksum has no meaning; 1 to 3 for a key of 128 to 256 bits; the
    /// method of compression.
    std::uint16_t aesVersion;
    std::uint8_t aesStrength;
    std::uint16_t aesMethod;

    static constexpr std::uint16_t encryptedFlag = 0x0001;
    static constexpr std::uint16_t descriptorFlag = 0x0008;
    static constexpr std::uint16_t utf8Flag = 0x0800;
    static constexpr std::uint16_t stored = 0;
    static constexpr std::uint16_t deflated = 8;
    static constexpr std::uint16_t aes = 99;

    bool IsEncrypted() const { return (flags & encryptedFlag) != 0; }
    bool IsNameUtf8() const { return (flags & utf8Flag) != 0; }
    bool IsAes() const { return method == aes; }
    std::uint16_t Compression() const { return IsAes() ? aesMethod : method; }
    /// The second version of AES entries leaves the checksum to the authentication code.
    bool HasChecksum() const { return !IsAes() || aesVersion == 1; }
};

/// What a reader of archives accepts.
struct SZipCaps {
    std::size_t maxEntries;
    std::size_t maxSize; ///< of the directory, in bytes
    bool isTailAllowed;  ///< bytes may follow the archive
};

class CZipDirectory {
public:
    /// Reads and checks the directory and the header of every entry. Throws CSourceError for a damaged or cut
    /// archive, one beyond the limits, one in parts or with a hidden directory, and one whose entries overlap or
    /// disagree with their headers.
    CZipDirectory(IRandomAccess& input, const SZipCaps& caps);

    /// In the directory's order.
    const std::vector<SZipEntry>& Entries() const { return m_entries; }
    /// The same, moved to the caller.
    std::vector<SZipEntry> TakeEntries() { return std::move(m_entries); }

private:
    struct SEnd;

    static SEnd FindEnd(IRandomAccess& input, bool isTailAllowed);
    static void ReadEnd64(IRandomAccess& input, SEnd& end);
    static void ReadSizes64(std::span<const unsigned char> extra, SZipEntry& entry);
    static void ReadAes(std::span<const unsigned char> extra, SZipEntry& entry);
    static void ReadHeader(IRandomAccess& input, SZipEntry& entry);
    void TakeEntry(CByteReader& reader);
    void CheckHeaders(IRandomAccess& input, std::uint64_t directoryPosition);

    std::vector<SZipEntry> m_entries;
};

} // namespace NSTQ::Providers
