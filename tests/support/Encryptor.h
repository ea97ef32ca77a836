// Encrypts as the descriptions of the formats say, with constant salts, so that the same input gives the same bytes.
// Passwords are Latin-1.
#pragma once

#include "support/ZipWriter.h"

#include <functional>

namespace NSTQ::Tests {

/// What describes an encryption, and its cipher for one of the blocks that each have a key or start of their own.
struct SBlockCipher {
    std::string info;
    std::function<std::string(std::uint32_t block, std::string text)> encrypt;
};
/// `hash` is a name as libcrypto knows it: "SHA512".
SBlockCipher AgileCipher(std::string_view passWord, const char* hash, unsigned keyBits, unsigned spinCount = 1000);
/// AES; the key takes 50000 rounds in packages and may take none in databases.
SBlockCipher StandardCipher(std::string_view passWord, unsigned keyBits, unsigned spinCount = 50000);
SBlockCipher Rc4Cipher40Bit(std::string_view passWord);
SBlockCipher Rc4Cipher(std::string_view passWord, unsigned keyBits);

/// The two streams of an encrypted package.
struct SEncryptedPackage {
    std::string info;
    std::string package;
    /// Both in a compound file, whose directory may claim another size of the package.
    std::string File(std::uint32_t claimed = 0) const;
};
SEncryptedPackage EncryptAgile(std::string_view package, std::string_view passWord, const char* hash,
                               unsigned keyBits, unsigned spinCount = 1000);
SEncryptedPackage EncryptStandard(std::string_view package, std::string_view passWord, unsigned keyBits);

/// The body of the record that describes an encryption of records, and the bytes that a stream's are combined with.
struct SRecordEncryption {
    std::string filePass;
    std::string keyStream;
};
SRecordEncryption EncryptRecords(const SBlockCipher& cipher, std::size_t streamSize);

/// Encrypts all pages of an accdb except page 0, which gets the description. `key` is the one in the header.
void EncryptDatabase(std::string& file, const SBlockCipher& cipher, std::uint32_t key);

/// The obfuscation of records.
struct SObfuscation {
    std::string numbers; ///< key and verifier, as the record holds them
    std::string pattern; ///< 16 bytes
    /// `at`: the record's position in the stream plus its size.
    std::string Apply(std::string body, std::size_t at) const;
};
/// `key` and `check` are what the tables in the description of the obfuscation make of the password.
SObfuscation Obfuscate(std::string_view passWord, unsigned key, unsigned check);

enum class EZipEncryption { None, Traditional, Aes128, Aes192, Aes256 };
/// Returns the entry with its packed bytes encrypted. `isSecondVersion`: AES entries have no checksum (AE-2).
SZipEntryText Encrypted(SZipEntryText entry, EZipEncryption encryption, bool isSecondVersion,
                        std::string_view passWord);

} // namespace NSTQ::Tests
