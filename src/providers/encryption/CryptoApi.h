// The common parts of the two CryptoAPI schemes of older programs: RC4 in records and "standard" AES in packages.
// Both have the same binary description.
#pragma once

#include "providers/encryption/CHash.h"

#include <array>
#include <cstdint>
#include <span>

namespace NSTQ::Providers {

struct SCryptoApi {
    static constexpr std::uint32_t rc4 = 0x6801;

    std::uint32_t algorithm;
    std::size_t keySize; ///< bytes
    std::array<unsigned char, 16> salt;
    std::array<unsigned char, 16> verifier;     ///< encrypted
    std::array<unsigned char, 32> verifierHash; ///< encrypted; RC4 needs only the first 20 bytes
};

/// Reads the part after the version (two numbers of 16 bits). Throws CSourceError for damage and for digests
/// other than SHA-1.
SCryptoApi ReadCryptoApi(std::span<const unsigned char> bytes);

/// Throws CSourceError for a cipher or key size that this type of file does not have.
[[noreturn]] void FailWithUnknownAlgorithm(const SCryptoApi& description);

/// Digest of a password's digest and a block's number, from which the block's key is made.
CSecretBytes HashBlock(CHash& hash, const CSecretBytes& passWordHash, std::uint32_t block);

} // namespace NSTQ::Providers
