#include "providers/zip/CZipEntryStream.h"

#include "providers/common/CRangeStream.h"
#include "providers/common/CSourceError.h"
#include "providers/encryption/Encryption.h"

#include <algorithm>
#include <new>

namespace NSTQ::Providers {

namespace {

unsigned StrengthOf(const SZipEntry& entry) {
    return entry.IsAes() ? entry.aesStrength : 0;
}

/// The byte before the content of a traditional encryption repeats one of the checksum; programs that do not know
/// that yet when they begin repeat one of the time.
std::unique_ptr<IByteStream> OpenPacked(const std::shared_ptr<IRandomAccess>& archive, const SZipEntry& entry,
                                        const std::string& passWord) {
    if (!entry.IsEncrypted())
        return std::make_unique<CRangeStream>(archive, entry.dataPosition, entry.packedSize);
    const auto crcByte = static_cast<unsigned char>(entry.crc >> 24);
    const auto timeByte = static_cast<unsigned char>(entry.modifiedTime >> 8);
    const bool isTimeAllowed = (entry.flags & SZipEntry::descriptorFlag) != 0;
    return DecryptEntry({archive,
                         entry.dataPosition,
                         entry.packedSize,
                         StrengthOf(entry),
                         {crcByte, isTimeAllowed ? timeByte : crcByte}},
                        passWord);
}

} // namespace

bool CZipEntryStream::Supports(const SZipEntry& entry) {
    constexpr std::uint16_t lastVersion = 2;
    const std::uint16_t method = entry.Compression();
    if (method != SZipEntry::stored && method != SZipEntry::deflated)
        return false;
    if (!entry.IsEncrypted())
        return !entry.IsAes();
    const bool isStrengthKnown =
        !entry.IsAes() || (entry.aesVersion >= 1 && entry.aesVersion <= lastVersion && entry.aesStrength >= 1);
    return isStrengthKnown && CanDecryptEntry(StrengthOf(entry));
}

CZipEntryStream::CZipEntryStream(const std::shared_ptr<IRandomAccess>& archive, const SZipEntry& entry,
                                 const SInflateLimits& limits, const std::string& passWord)
    : m_name(entry.name), m_limits(limits), m_size(entry.size), m_wantedCrc(entry.crc),
      m_hasChecksum(entry.HasChecksum()), m_isDeflated(entry.Compression() == SZipEntry::deflated) {
    CheckClaims(entry);
    m_packed = OpenPacked(archive, entry, passWord);
    if (!m_isDeflated)
        return;
    m_input.resize(inputSize);
    if (inflateInit2(&m_zlib, -MAX_WBITS) != Z_OK)
        throw std::bad_alloc();
}

CZipEntryStream::~CZipEntryStream() {
    if (m_isDeflated)
        inflateEnd(&m_zlib);
}

void CZipEntryStream::CheckClaims(const SZipEntry& entry) const {
    if (!Supports(entry))
        Fail("its compression method or encryption is unknown: " + std::to_string(entry.Compression()));
    if (!m_isDeflated && !entry.IsEncrypted() && entry.packedSize != entry.size)
        Fail("it is stored without compression, but has two different sizes");
    if (entry.size > m_limits.maxSize)
        Fail("it is larger than allowed: " + std::to_string(entry.size) + " bytes");
}

std::size_t CZipEntryStream::Read(std::span<unsigned char> target) {
    if (m_isEnd)
        return 0;
    const std::size_t count = m_isDeflated ? Inflate(target) : CopyStored(target);
    Count(target.first(count));
    if (m_isEnd)
        CheckEnd();
    return count;
}

void CZipEntryStream::FillInput() {
    const std::size_t count = m_packed->Read(m_input);
    if (count == 0)
        Fail("its compressed bytes end too early");
    m_zlib.next_in = m_input.data();
    m_zlib.avail_in = static_cast<uInt>(count);
}

std::size_t CZipEntryStream::Inflate(std::span<unsigned char> target) {
    const auto room = static_cast<uInt>(std::min<std::size_t>(target.size(), 1U << 30));
    m_zlib.next_out = target.data();
    m_zlib.avail_out = room;
    while (m_zlib.avail_out == room && !m_isEnd) {
        if (m_zlib.avail_in == 0)
            FillInput();
        const uInt before = m_zlib.avail_in;
        const int result = inflate(&m_zlib, Z_NO_FLUSH);
        m_consumed += before - m_zlib.avail_in;
        if (result == Z_MEM_ERROR)
            throw std::bad_alloc();
        if (result != Z_OK && result != Z_STREAM_END)
            Fail("its compressed bytes are damaged");
        m_isEnd = result == Z_STREAM_END;
    }
    return room - m_zlib.avail_out;
}

std::size_t CZipEntryStream::CopyStored(std::span<unsigned char> target) {
    const std::size_t count = m_packed->Read(target);
    m_consumed += count;
    m_isEnd = count == 0;
    return count;
}

void CZipEntryStream::Count(std::span<const unsigned char> bytes) {
    m_produced += bytes.size();
    if (m_produced > m_size)
        Fail("it decompresses to more than its size of " + std::to_string(m_size) + " bytes");
    // Only the compressed bytes read so far count, so that a forged size has no effect.
    if (m_produced > m_limits.freeSize && m_produced / m_limits.maxRatio > m_consumed)
        Fail("its compression ratio exceeds " + std::to_string(m_limits.maxRatio));
    if (m_hasChecksum)
        m_crc = static_cast<std::uint32_t>(crc32_z(m_crc, bytes.data(), bytes.size()));
}

void CZipEntryStream::CheckEnd() const {
    if (m_produced != m_size)
        Fail("its decompressed size is not " + std::to_string(m_size) + " bytes");
    if (m_hasChecksum && m_crc != m_wantedCrc)
        Fail("its checksum is wrong");
}

void CZipEntryStream::Fail(const std::string& what) const {
    throw CSourceError("zip entry " + PrintableName(m_name) + ": " + what);
}

} // namespace NSTQ::Providers
