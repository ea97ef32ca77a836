// The "agile" encryption of newer programs: an XML descriptor states the ciphers and digests with which the key of
// the file is encrypted by the password; the key decrypts blocks that each have an initialisation vector of their
// own.
//
//     CAgileEncryption encryption(descriptor);
//     encryption.Unlock(passWord);
//     encryption.DecryptBlock(number, bytes);
//
// The HMAC of the data is not checked: that would require reading the whole file before its first row.
#pragma once

#include "providers/encryption/CAesCipher.h"
#include "providers/encryption/CHash.h"
#include "providers/encryption/CPassWord.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace NSTQ::Providers {

class CXmlScanner;

class CAgileEncryption {
public:
    /// Rounds of hashing between a password and its key. Programs that encrypt use 100,000. These take about half a
    /// second, once for each password tried (CSpunDigests).
    static constexpr std::uint32_t maxSpinCount = 2'000'000;

    /// `descriptor` is the XML document. Throws CSourceError when it is damaged, asks for ciphers or digests that are
    /// not known, or has a lock for certificates only.
    explicit CAgileEncryption(std::span<const unsigned char> descriptor);

    /// Finds the key, which takes as long as the descriptor's spin count wants. Throws CPassWordRefused when the
    /// password is not the right one.
    void Unlock(const CPassWord& passWord);

    /// Decrypts in place the block of data that has this number; its size is a multiple of 16. To be called after
    /// Unlock.
    void DecryptBlock(std::uint32_t number, std::span<unsigned char> bytes);

private:
    using TBytes = std::vector<unsigned char>;

    struct SCipher {
        EHash hash = EHash::Sha1;
        std::size_t keySize = 0; ///< bytes
        TBytes salt;
    };
    struct SLock : SCipher {
        std::uint32_t spinCount = 0;
        TBytes verifier; ///< encrypted, like the two that follow
        TBytes verifierHash;
        TBytes key;
    };

    void ReadLocks(CXmlScanner& xml);
    static SCipher ReadCipher(CXmlScanner& xml);
    static SLock ReadLock(CXmlScanner& xml);

    SCipher m_data;
    SLock m_lock;
    std::optional<CHash> m_dataHash;
    std::optional<CAesCipher> m_cipher;
};

} // namespace NSTQ::Providers
