// The content of one entry of a zip archive, decrypted and decompressed.
#pragma once

#include "providers/common/ByteSources.h"
#include "providers/zip/CInflater.h"
#include "providers/zip/CZipDirectory.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace NSTQ::Providers {

/// Limits of the decompressed size of an entry. Bytes are counted while they are read.
struct SInflateLimits {
    std::uint64_t maxSize;  ///< total bytes
    std::uint64_t freeSize; ///< bytes that are allowed whatever the ratio
    std::uint64_t maxRatio; ///< above `freeSize`: bytes out for each byte in
};

class CZipEntryStream : public IByteStream {
public:
    /// Whether entries of this kind can be read: stored or deflated, and encrypted in a way that this build decrypts
    /// or not at all.
    static bool Supports(const SZipEntry& entry);

    /// Throws CSourceError for an entry that is not supported and a stated size beyond the limits; for an encrypted
    /// one CPassWordRefused when the password is wrong or empty, and CSourceError when its authentication code is
    /// wrong. Deriving the key of an AES entry takes about two milliseconds.
    CZipEntryStream(const std::shared_ptr<IRandomAccess>& archive, const SZipEntry& entry,
                    const SInflateLimits& limits, const std::string& passWord = {});
    CZipEntryStream(const CZipEntryStream&) = delete;
    CZipEntryStream& operator=(const CZipEntryStream&) = delete;

    /// As the interface says. The end is returned only if size and checksum are right.
    std::size_t Read(std::span<unsigned char> target) override;

private:
    static constexpr std::size_t inputSize = 1U << 16;

    void CheckClaims(const SZipEntry& entry) const;
    void FillInput();
    std::size_t Inflate(std::span<unsigned char> target);
    std::size_t CopyStored(std::span<unsigned char> target);
    void Count(std::span<const unsigned char> bytes);
    void CheckEnd() const;
    [[noreturn]] void Fail(const std::string& what) const;

    std::string m_name;
    SInflateLimits m_limits;
    std::unique_ptr<IByteStream> m_packed; ///< decrypted, still compressed
    std::uint64_t m_consumed = 0;
    std::uint64_t m_size; ///< as stated
    std::uint64_t m_produced = 0;
    std::uint32_t m_wantedCrc;
    std::uint32_t m_crc = 0;
    bool m_hasChecksum;
    bool m_isEnd = false;
    std::optional<CInflater> m_inflater; ///< of a deflated entry
    std::vector<unsigned char> m_input;
};

} // namespace NSTQ::Providers
