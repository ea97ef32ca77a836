// The contents of one entry of a zip archive, stored or deflated.
#pragma once

#include "providers/zip/CZipArchive.h"

#include <zlib.h>

namespace NSTQ::Providers {

class CZipEntryStream : public IByteStream {
public:
    /// Throws CSourceError for an encrypted entry, an unknown method and a stated size beyond the limits.
    CZipEntryStream(std::shared_ptr<IRandomAccess> input, const SZipEntry& entry, const SInflateLimits& limits);
    CZipEntryStream(const CZipEntryStream&) = delete;
    CZipEntryStream& operator=(const CZipEntryStream&) = delete;
    ~CZipEntryStream() override;

    /// As the interface says. The end is returned only if size and checksum are right.
    std::size_t Read(std::span<unsigned char> target) override;

private:
    static constexpr std::size_t inputSize = 1U << 16;

    void FillInput();
    std::size_t Inflate(std::span<unsigned char> target);
    std::size_t CopyStored(std::span<unsigned char> target);
    void Count(std::span<const unsigned char> bytes);
    void CheckEnd() const;
    [[noreturn]] void Fail(const std::string& what) const;

    std::shared_ptr<IRandomAccess> m_archive;
    std::string m_name;
    SInflateLimits m_limits;
    std::uint64_t m_offset; ///< of the next compressed byte in the file
    std::uint64_t m_left;   ///< compressed bytes not yet read
    std::uint64_t m_consumed = 0;
    std::uint64_t m_size; ///< as stated
    std::uint64_t m_produced = 0;
    std::uint32_t m_wantedCrc;
    std::uint32_t m_crc = 0;
    bool m_isDeflated;
    bool m_isEnd = false;
    z_stream m_zlib = {};
    std::vector<unsigned char> m_input;
};

} // namespace NSTQ::Providers
