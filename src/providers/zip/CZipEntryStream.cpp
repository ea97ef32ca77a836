#include "providers/zip/CZipEntryStream.h"

#include "providers/common/CSourceError.h"

#include <algorithm>
#include <new>

namespace NSTQ::Providers {

namespace {

constexpr std::uint16_t storedMethod = 0;
constexpr std::uint16_t deflatedMethod = 8;

} // namespace

CZipEntryStream::CZipEntryStream(std::shared_ptr<IRandomAccess> input, const SZipEntry& entry,
                                 const SInflateLimits& limits)
    : m_archive(std::move(input)), m_name(entry.name), m_limits(limits), m_offset(entry.dataPosition),
      m_left(entry.packedSize), m_size(entry.size), m_wantedCrc(entry.crc),
      m_isDeflated(entry.method == deflatedMethod) {
    if (entry.IsEncrypted())
        Fail("it is encrypted");
    if (entry.method != storedMethod && entry.method != deflatedMethod)
        Fail("its compression method is unknown: " + std::to_string(entry.method));
    if (!m_isDeflated && entry.packedSize != entry.size)
        Fail("it is stored without compression, but has two different sizes");
    if (entry.size > m_limits.maxSize)
        Fail("it is larger than allowed: " + std::to_string(entry.size) + " bytes");
    m_input.resize(inputSize);
    if (m_isDeflated && inflateInit2(&m_zlib, -MAX_WBITS) != Z_OK)
        throw std::bad_alloc();
}

CZipEntryStream::~CZipEntryStream() {
    if (m_isDeflated)
        inflateEnd(&m_zlib);
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
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(m_left, m_input.size()));
    if (count == 0)
        Fail("its compressed bytes end too early");
    m_archive->ReadAt(m_offset, std::span(m_input).first(count));
    m_offset += count;
    m_left -= count;
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
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(m_left, target.size()));
    m_archive->ReadAt(m_offset, target.first(count));
    m_offset += count;
    m_left -= count;
    m_consumed += count;
    m_isEnd = m_left == 0;
    return count;
}

void CZipEntryStream::Count(std::span<const unsigned char> bytes) {
    m_produced += bytes.size();
    if (m_produced > m_size)
        Fail("it decompresses to more than its size of " + std::to_string(m_size) + " bytes");
    // Only the compressed bytes read so far count, so that a forged size has no effect.
    if (m_produced > m_limits.freeSize && m_produced / m_limits.maxRatio > m_consumed)
        Fail("its compression ratio exceeds " + std::to_string(m_limits.maxRatio));
    m_crc = static_cast<std::uint32_t>(crc32_z(m_crc, bytes.data(), bytes.size()));
}

void CZipEntryStream::CheckEnd() const {
    if (m_produced != m_size)
        Fail("its decompressed size is not " + std::to_string(m_size) + " bytes");
    if (m_crc != m_wantedCrc)
        Fail("its checksum is wrong");
}

void CZipEntryStream::Fail(const std::string& what) const {
    throw CSourceError("zip entry " + PrintableName(m_name) + ": " + what);
}

} // namespace NSTQ::Providers
