// The keys of files that are encrypted with RC4: one for each block of a stream, made from a digest of the password.
// The two schemes differ only in how the digests are made.
#pragma once

#include "providers/encryption/CHash.h"
#include "providers/encryption/CPassWord.h"
#include "providers/encryption/CryptoApi.h"

#include <array>
#include <cstdint>
#include <span>

namespace NSTQ::Providers {

class CRc4Keys {
public:
    /// The 40-bit scheme (MD5). `description` is the part after the version: salt, verifier and its digest, 16
    /// bytes each. Throws CSourceError when it is shorter, CPassWordRefused for a password that
    /// is not the right one.
    static CRc4Keys Make40Bit(std::span<const unsigned char> description, const CPassWord& passWord);
    /// The CryptoAPI scheme (SHA-1, 40 to 128 bits). Throws CSourceError for another algorithm,
    /// CPassWordRefused as above.
    static CRc4Keys MakeCryptoApi(const SCryptoApi& description, const CPassWord& passWord);

    /// The key of a block, ready for CRc4.
    CSecretBytes BlockKey(std::uint32_t block);

private:
    CRc4Keys(EHash hash, const CSecretBytes& passWordHash, std::size_t keySize)
        : m_hash(hash), m_passWordHash(passWordHash), m_keySize(keySize) {}
    bool Opens(std::span<const unsigned char> verifier, std::span<const unsigned char> verifierHash);

    CHash m_hash;
    CSecretBytes m_passWordHash;
    std::size_t m_keySize; ///< bytes of the digest that are the key; the rest of it is 0
};

} // namespace NSTQ::Providers
