#include "providers/zip/CZipEntryStream.h"

#include "providers/common/CRangeStream.h"
#include "providers/common/CSourceError.h"
#include "providers/encryption/Encryption.h"

#include <algorithm>

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
      m_hasChecksum(entry.HasChecksum()) {
    CheckClaims(entry);
    m_packed = OpenPacked(archive, entry, passWord);
    if (entry.Compression() != SZipEntry::deflated)
        return;
    m_input.resize(inputSize);
    m_inflater.emplace();
}

void CZipEntryStream::CheckClaims(const SZipEntry& entry) const {
    if (!Supports(entry))
        Fail("its compression method or encryption is unknown: " + std::to_string(entry.Compression()));
    if (entry.Compression() == SZipEntry::stored && !entry.IsEncrypted() && entry.packedSize != entry.size)
        Fail("it is stored without compression, but has two different sizes");
    if (entry.size > m_limits.maxSize)
        Fail("it is larger than allowed: " + std::to_string(entry.size) + " bytes");
}

std::size_t CZipEntryStream::Read(std::span<unsigned char> target) {
    if (m_isEnd)
        return 0;
    const std::size_t count = m_inflater ? Inflate(target) : CopyStored(target);
    Count(target.first(count));
    if (m_isEnd)
        CheckEnd();
    return count;
}

void CZipEntryStream::FillInput() {
    const std::size_t count = m_packed->Read(m_input);
    if (count == 0)
        Fail("its compressed bytes end too early");
    m_inflater->SetInput({m_input.data(), count});
}

std::size_t CZipEntryStream::Inflate(std::span<unsigned char> target) {
    constexpr std::size_t maxRoom = std::size_t{1} << 30;
    target = target.first(std::min(target.size(), maxRoom));
    std::size_t count = 0;
    // Input comes only when nothing is left: of bytes that were taken long ago, output may still be due.
    while (!m_isEnd) {
        const std::size_t before = m_inflater->GetInputLeft();
        const CInflater::EState state = m_inflater->Inflate(target, count);
        m_consumed += before - m_inflater->GetInputLeft();
        m_isEnd = state == CInflater::EState::End;
        if (state == CInflater::EState::Damaged || (count == 0 && !m_isEnd && m_inflater->GetInputLeft() > 0))
            Fail("its compressed bytes are damaged");
        if (count > 0)
            break;
        if (!m_isEnd)
            FillInput();
    }
    return count;
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
        m_crc = CInflater::AddToCrc(m_crc, bytes);
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
