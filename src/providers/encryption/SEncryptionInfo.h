// What a file says of its encryption: a version, by which the scheme is told, and a description that each scheme has
// in a form of its own.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>

namespace NSTQ::Providers {

struct SEncryptionInfo {
    enum class EScheme {
        Rc4Of40Bits, ///< as CRc4Keys::Make40Bit reads it
        CryptoApi,   ///< as ReadCryptoApi reads it: RC4 or AES
        Agile        ///< as CAgileEncryption reads it
    };

    EScheme scheme;
    std::span<const unsigned char> description; ///< a part of what was read
};

/// Reads version and description. Throws CSourceError for a version of none of the schemes in `known`, those that
/// this kind of file may have.
SEncryptionInfo ReadEncryptionInfo(std::span<const unsigned char> bytes,
                                   std::initializer_list<SEncryptionInfo::EScheme> known);

/// Throws the CSourceError for an encryption that is not known; `which` tells what of it.
[[noreturn]] void FailWithUnknownEncryption(const std::string& which);
/// Throws the CSourceError for a description that is cut off or contradicts itself.
[[noreturn]] void FailWithDamagedEncryption();

} // namespace NSTQ::Providers
