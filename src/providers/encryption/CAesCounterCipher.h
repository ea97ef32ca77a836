// AES as zip archives use it: the content is combined with the encrypted numbers of its blocks, which begin at 1 and
// are stored little-endian.
#pragma once

#include "providers/encryption/CAesCipher.h"
#include "providers/encryption/IEntryCipher.h"

#include <array>
#include <cstdint>

namespace NSTQ::Providers {

class CAesCounterCipher : public IEntryCipher {
public:
    /// A key of 16, 24 or 32 bytes.
    explicit CAesCounterCipher(std::span<const unsigned char> key) : m_cipher(key, EAes::EncryptBlocks) {}

    void Decrypt(std::span<unsigned char> bytes) override;

private:
    /// Many blocks are encrypted at a time, because a call costs more than a block.
    static constexpr std::size_t streamSize = 256 * CAesCipher::blockSize;

    void FillStream();

    CAesCipher m_cipher;
    std::uint64_t m_block = 0;
    std::size_t m_used = streamSize;
    std::array<unsigned char, streamSize> m_stream = {};
};

} // namespace NSTQ::Providers
