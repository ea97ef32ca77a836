// The "standard" encryption of packages: AES without chaining, the key made from the password by SHA-1.
#pragma once

#include "providers/encryption/CAesCipher.h"
#include "providers/encryption/CryptoApi.h"

#include <optional>

namespace NSTQ::Providers {

class CStandardEncryption {
public:
    /// Throws CSourceError for another cipher.
    explicit CStandardEncryption(const SCryptoApi& description);

    /// Makes the key. False when the password (UTF-16, the lower byte first) is wrong.
    bool Unlock(std::span<const unsigned char> passWord);

    /// Decrypts in place whole blocks of 16 bytes. To be called after Unlock has returned true.
    void Decrypt(std::span<unsigned char> bytes) { m_cipher->Decrypt({}, bytes); }

private:
    SCryptoApi m_description;
    std::optional<CAesCipher> m_cipher;
};

} // namespace NSTQ::Providers
