// The "agile" encryption of newer programs: an XML descriptor says with which ciphers and digests the file's key is
// locked up under the password, and the key opens blocks of data that each have a start vector of their own.
//
//     CAgileEncryption encryption(descriptor);
//     if (!encryption.Unlock(passWord.Wide()))
//         passWord.Refuse();
//     encryption.DecryptBlock(LittleEndian32(index), bytes);
//
// That the data as a whole are unchanged is not checked: it would mean to read all of a file before its first row.
#pragma once

#include "providers/encryption/CAesCipher.h"
#include "providers/encryption/CHash.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace NSTQ::Providers {

class CXmlScanner;

class CAgileEncryption {
public:
    /// Rounds of hashing between a password and its key. Programs that encrypt use 100,000. These take about half a
    /// second, and a conversion goes through them for each of its few opens.
    static constexpr std::uint32_t maxSpinCount = 2'000'000;

    /// `descriptor` is the XML document. Throws CSourceError when it is damaged, asks for ciphers or digests that are
    /// not known, or has a lock for certificates only.
    explicit CAgileEncryption(std::span<const unsigned char> descriptor);

    /// Finds the key. False when the password (UTF-16, the lower byte first) is wrong. Takes as long as the
    /// descriptor's spin count wants.
    bool Unlock(std::span<const unsigned char> passWord);

    /// Decrypts in place a block of data, whose size is a multiple of 16. `blockKey` tells the block: the number of a
    /// package's segment as four bytes, for instance. To be called after Unlock has returned true.
    void DecryptBlock(std::span<const unsigned char> blockKey, std::span<unsigned char> bytes);

private:
    using TBytes = std::vector<unsigned char>;

    struct SCipher {
        EHash eHash = EHash::Sha1;
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
