// AES as these files use it: whole blocks of 16 bytes, in place, nothing padded.
#pragma once

#include "providers/encryption/SystemCrypto.h"

namespace NSTQ::Providers {

class CAesCipher {
public:
    static constexpr std::size_t blockSize = 16;

    /// A key of 16, 24 or 32 bytes; throws CSourceError for any other.
    CAesCipher(std::span<const unsigned char> key, EAes use) : m_aes(MakeSystemAes(key, use)) {}

    /// Encrypts or decrypts. `bytes` are whole blocks; throws CSourceError for others. `start` is the initialisation
    /// vector of 16 bytes, ignored without chaining.
    void Apply(std::span<const unsigned char> start, std::span<unsigned char> bytes);

private:
    std::unique_ptr<ISystemAes> m_aes;
};

} // namespace NSTQ::Providers
