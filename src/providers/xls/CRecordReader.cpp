#include "providers/xls/CRecordReader.h"

#include "providers/common/CSourceError.h"

#include <algorithm>
#include <cstring>

namespace NSTQ::Providers {

namespace {

/// The number of bytes at the beginning of a body that are never encrypted.
std::size_t PlainSize(ERecord type, std::size_t size) {
    switch (type) {
    case ERecord::Bof:
    case ERecord::FilePass:
    case ERecord::InterfaceHeader:
    case ERecord::UserExclusive:
    case ERecord::FileLock:
    case ERecord::RevisionInfo:
    case ERecord::RevisionHead:
        return size;
    case ERecord::BoundSheet:
        return std::min<std::size_t>(4, size);
    default:
        return 0;
    }
}

} // namespace

CRecordReader::CRecordReader(std::shared_ptr<IRandomAccess> stream, std::shared_ptr<IRecordCipher> cipher,
                             std::uint64_t position)
    : m_stream(std::move(stream)), m_cipher(std::move(cipher)),
      m_buffer(std::make_unique_for_overwrite<unsigned char[]>(bufferSize)), m_read(position) {
    if (position > m_stream->Size())
        throw CSourceError("the position of a sheet, byte " + std::to_string(position) +
                           ", is beyond the end of the stream");
}

bool CRecordReader::NextContinue() {
    return Have(headerSize) && ERecord{ReadU16(m_buffer.get() + m_next)} == ERecord::Continue && Next();
}

/// Makes `size` bytes, or all that remain, contiguous in the buffer; false when there are fewer.
bool CRecordReader::Fill(std::size_t size) {
    const std::size_t kept = m_end - m_next;
    std::memmove(m_buffer.get(), m_buffer.get() + m_next, kept);
    const auto room = static_cast<std::size_t>(std::min<std::uint64_t>(bufferSize - kept, m_stream->Size() - m_read));
    m_next = 0;
    m_end = kept;
    if (room > 0)
        m_stream->ReadAt(m_read, {m_buffer.get() + kept, room});
    m_read += room;
    m_end += room;
    return m_end >= size;
}

void CRecordReader::FillRecord(std::size_t size) {
    if (!Fill(size))
        throw CSourceError("the stream of the workbook ends within the record at byte " +
                           std::to_string(m_read - m_end));
}

void CRecordReader::Decrypt() {
    const std::size_t plain = PlainSize(m_type, m_body.size());
    if (plain == m_body.size())
        return;
    m_cipher->Decrypt(m_body.subspan(plain), GetPosition() + headerSize + plain,
                      static_cast<std::uint16_t>(m_body.size()));
}

void CRecordReader::FailWithSize() const {
    throw CSourceError("the record at byte " + std::to_string(GetPosition()) + " is too short");
}

} // namespace NSTQ::Providers
