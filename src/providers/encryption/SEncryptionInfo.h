// The encryption info of a file: a version, which determines the scheme, and a description in a form that depends on
// the scheme.
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

/// Throws the CSourceError for an unknown encryption; `which` is the unknown part.
[[noreturn]] void FailWithUnknownEncryption(const std::string& which);
/// Throws the CSourceError for a description that is truncated or inconsistent.
[[noreturn]] void FailWithDamagedEncryption();

} // namespace NSTQ::Providers
