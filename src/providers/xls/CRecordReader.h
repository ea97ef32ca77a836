// Reads the records of a workbook stream: each has a type, a size and a body. The stream is read in large pieces; a
// body is a part of the piece in memory and, in an encrypted workbook, decrypted there.
#pragma once

#include "providers/common/ByteSources.h"
#include "providers/common/CByteReader.h"
#include "providers/encryption/IRecordCipher.h"
#include "providers/xls/RecordTypes.h"

#include <memory>
#include <string>

namespace NSTQ::Providers {

class CRecordReader {
public:
    /// Begins at `position`. Without a cipher nothing is decrypted.
    CRecordReader(std::shared_ptr<IRandomAccess> stream, std::shared_ptr<IRecordCipher> cipher,
                  std::uint64_t position);

    /// The records from the next one on are decrypted.
    void SetCipher(std::shared_ptr<IRecordCipher> cipher) { m_cipher = std::move(cipher); }

    /// Goes to the next record. False at the end of the stream; throws CSourceError when that lies within a record.
    bool Next() {
        if (!Have(headerSize))
            return false;
        const unsigned char* const header = m_buffer.get() + m_next;
        const std::uint16_t size = ReadU16(header + 2);
        if (m_end - m_next < headerSize + size)
            FillRecord(headerSize + size);
        m_type = ERecord{ReadU16(m_buffer.get() + m_next)};
        m_body = {m_buffer.get() + m_next + headerSize, size};
        m_next += headerSize + size;
        if (m_cipher != nullptr)
            Decrypt();
        return true;
    }
    /// Goes to the next record if it continues this one, else stays. The body may become invalid in both cases.
    bool NextContinue();

    ERecord GetType() const { return m_type; }
    /// Valid until the next operation.
    std::span<const unsigned char> GetBody() const { return m_body; }
    /// Where the record begins in the stream.
    std::uint64_t GetPosition() const { return m_read - (m_end - m_next) - m_body.size() - headerSize; }
    /// The body, of which `size` bytes must be there. Throws CSourceError when they are not.
    const unsigned char* Require(std::size_t size) const {
        if (m_body.size() < size)
            FailWithSize();
        return m_body.data();
    }

private:
    static constexpr std::size_t headerSize = 4;
    /// More than the size of any record.
    static constexpr std::size_t bufferSize = 1U << 17;

    bool Have(std::size_t size) { return m_end - m_next >= size || Fill(size); }
    bool Fill(std::size_t size);
    void FillRecord(std::size_t size);
    void Decrypt();
    [[noreturn]] void FailWithSize() const;

    std::shared_ptr<IRandomAccess> m_stream;
    std::shared_ptr<IRecordCipher> m_cipher;
    std::unique_ptr<unsigned char[]> m_buffer;
    std::size_t m_next = 0; ///< where the next record begins in the buffer
    std::size_t m_end = 0;  ///< of what the buffer holds
    std::uint64_t m_read;   ///< the position in the stream that belongs to it
    ERecord m_type = {};
    std::span<unsigned char> m_body;
};

} // namespace NSTQ::Providers
