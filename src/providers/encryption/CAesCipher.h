// AES as these files use it: whole blocks of 16 bytes, decrypted in place, nothing padded.
#pragma once

#include "providers/encryption/LibCrypto.h"

#include <cstddef>
#include <span>

namespace NSTQ::Providers {

enum class EChaining { None, Cbc };

class CAesCipher {
public:
    static constexpr std::size_t blockSize = 16;

    /// A key of 16, 24 or 32 bytes; throws CSourceError for any other.
    CAesCipher(std::span<const unsigned char> key, EChaining chaining);

    /// `bytes` are whole blocks. `start` is the initialisation vector of 16 bytes, ignored without
    /// chaining.
    void Decrypt(std::span<const unsigned char> start, std::span<unsigned char> bytes);

private:
    TLibCryptoPtr<evp_cipher_ctx_st> m_context;
};

} // namespace NSTQ::Providers
