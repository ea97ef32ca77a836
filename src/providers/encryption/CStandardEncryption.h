// The "standard" encryption of packages: AES without chaining, the key made from the password by SHA-1. A package has
// one key, databases have one for each page.
#pragma once

#include "providers/encryption/CAesCipher.h"
#include "providers/encryption/CPassWord.h"
#include "providers/encryption/CryptoApi.h"

#include <optional>

namespace NSTQ::Providers {

class CStandardEncryption {
public:
    /// How often the password of a package is hashed.
    static constexpr std::uint32_t packageSpinCount = 50'000;

    /// Throws CSourceError for another cipher.
    explicit CStandardEncryption(const SCryptoApi& description, std::uint32_t spinCount = packageSpinCount);

    /// Makes the key. Throws CPassWordRefused when the password is not the right one.
    void Unlock(const CPassWord& passWord);

    /// Switches to the key of a block; a package has block 0. To be called after Unlock.
    void SelectBlock(std::uint32_t block);

    /// Decrypts in place whole blocks of 16 bytes. To be called after Unlock.
    void Decrypt(std::span<unsigned char> bytes) { m_cipher->Apply({}, bytes); }

private:
    SCryptoApi m_description;
    std::uint32_t m_spinCount;
    CHash m_hash{EHash::Sha1};
    CSecretBytes m_passWordHash{0};
    std::optional<CAesCipher> m_cipher;
};

} // namespace NSTQ::Providers
