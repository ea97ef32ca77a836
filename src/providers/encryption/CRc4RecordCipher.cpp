#include "providers/encryption/CRc4RecordCipher.h"

#include <algorithm>

namespace NSTQ::Providers {

void CRc4RecordCipher::Decrypt(std::span<unsigned char> bytes, std::uint64_t streamPosition, std::uint16_t) {
    while (!bytes.empty()) {
        GoTo(streamPosition);
        const std::uint64_t left = blockSize - streamPosition % blockSize;
        const auto part = bytes.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), left)));
        m_cipher->Apply(part);
        streamPosition += part.size();
        m_position = streamPosition;
        bytes = bytes.subspan(part.size());
    }
}

/// Skips within a block; for another block or backwards, starts with a new key.
void CRc4RecordCipher::GoTo(std::uint64_t position) {
    const std::uint64_t block = position / blockSize;
    if (!m_cipher || block != m_block || position < m_position) {
        m_cipher.emplace(m_keys.BlockKey(static_cast<std::uint32_t>(block)).Bytes());
        m_block = block;
        m_position = block * blockSize;
    }
    m_cipher->Skip(static_cast<std::size_t>(position - m_position));
    m_position = position;
}

} // namespace NSTQ::Providers
