// Encrypts, written from the descriptions of the formats: what the readers have to open. Passwords are ASCII.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tests {

/// The two streams of an encrypted package.
struct SEncryptedPackage {
    std::string info;
    std::string package;
    /// Both in a compound file.
    std::string File() const;
};

/// `hash` is a name as libcrypto knows it: "SHA512".
SEncryptedPackage EncryptAgile(std::string_view package, std::string_view passWord, const char* hash,
                               unsigned keyBits, unsigned spinCount = 1000);
SEncryptedPackage EncryptStandard(std::string_view package, std::string_view passWord, unsigned keyBits);

/// The body of the record that describes an encryption of records, and the bytes that a stream's are combined with.
struct SRecordEncryption {
    std::string filePass;
    std::string keyStream;
};
SRecordEncryption EncryptRecords40Bit(std::string_view passWord, std::size_t streamSize);
SRecordEncryption EncryptRecordsCryptoApi(std::string_view passWord, unsigned keyBits, std::size_t streamSize);

/// The obfuscation of records, by the tables of its description.
struct SObfuscation {
    std::string numbers; ///< key and verifier, as the record holds them
    std::string pattern; ///< 16 bytes
    /// `at`: the record's position in the stream plus its size.
    std::string Apply(std::string body, std::size_t at) const;
};
SObfuscation Obfuscate(std::string_view passWord);

} // namespace NSTQ::Tests
