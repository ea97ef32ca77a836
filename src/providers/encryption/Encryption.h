// The interface to encrypted files for the other providers. A build without encryption uses EncryptionAbsent.cpp
// instead, in which each function throws CSourceError.
//
// Passwords are in the ANSI code page. Each function, where not stated otherwise, throws CSourceError when the
// description of the encryption is damaged or the encryption method is unknown, and CPassWordRefused, whose text says
// which, when the password is missing or wrong.
#pragma once

#include "providers/common/ByteSources.h"
#include "providers/compound/CCompoundFile.h"
#include "providers/encryption/IRecordCipher.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace NSTQ::Providers {

/// Decrypts in place one of the numbered blocks that a file is encrypted in: a package's segment or a database's
/// page.
using FDecryptBlock = std::function<void(std::uint32_t number, std::span<unsigned char> bytes)>;

/// The OPC package (an xlsx workbook) that a compound file holds, decrypted where it is read; it may be read after
/// `file` is gone. Without a password the default password is tried.
std::shared_ptr<IRandomAccess> OpenEncryptedPackage(CCompoundFile& file, const std::string& passWord);

/// The cipher that the record FILEPASS of an xls workbook describes; `filePassRecord` is its body. Without a password
/// as above.
std::unique_ptr<IRecordCipher> MakeRecordCipher(std::span<const unsigned char> filePassRecord, bool isBiff8,
                                                const std::string& passWord);

/// Decrypts the pages of an ACE database. `key` and `description` are those of its header page. Refuses with
/// DB_SEC_E_AUTH_FAILED.
FDecryptBlock MakePageDecoder(std::uint32_t key, std::span<const unsigned char> description,
                              const std::string& passWord);
/// Decodes the pages of a Jet database, which takes no password.
FDecryptBlock MakeJetPageDecoder(std::uint32_t key);

/// The bytes of an encrypted entry of a zip archive, and what the directory says of their encryption.
struct SEncryptedEntry {
    std::shared_ptr<IRandomAccess> archive;
    std::uint64_t position;
    std::uint64_t size;
    /// 1, 2 and 3 for AES with a key of 128, 192 and 256 bits, 0 for the traditional encryption.
    unsigned aesStrength;
    /// With the traditional encryption, what the byte before the content may be if the password is right.
    std::array<unsigned char, 2> checks;
};

/// Whether this build decrypts such entries; always false without encryption. Throws nothing.
bool CanDecryptEntry(unsigned aesStrength);
/// The decrypted content of an entry, still compressed. AES entries are read as a whole first, and refused with
/// CSourceError when their authentication code is wrong. The traditional encryption accepts a wrong password in one
/// case of 256, and then gives other bytes.
std::unique_ptr<IByteStream> DecryptEntry(const SEncryptedEntry& entry, const std::string& passWord);

} // namespace NSTQ::Providers
