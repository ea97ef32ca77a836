#include "providers/common/CByteReader.h"
#include "providers/encryption/CAgileEncryption.h"
#include "providers/encryption/CRc4.h"
#include "providers/encryption/CRc4Keys.h"
#include "providers/encryption/CStandardEncryption.h"
#include "providers/encryption/Encryption.h"
#include "providers/encryption/SEncryptionInfo.h"

namespace NSTQ::Providers {

namespace {

using CBytes = std::span<const unsigned char>;

FDecryptBlock DecodeAgile(CBytes description, const CPassWord& passWord) {
    const auto agile = std::make_shared<CAgileEncryption>(description);
    agile->Unlock(passWord);
    return [agile](std::uint32_t number, std::span<unsigned char> bytes) { agile->DecryptBlock(number, bytes); };
}

FDecryptBlock DecodeRc4(CRc4Keys made) {
    const auto keys = std::make_shared<CRc4Keys>(std::move(made));
    return [keys](std::uint32_t number, std::span<unsigned char> bytes) {
        CRc4(keys->BlockKey(number).Bytes()).Apply(bytes);
    };
}

/// RC4, or AES in the form of packages, or, for a database that older programs can open, AES with a simpler key
/// derivation.
FDecryptBlock DecodeCryptoApi(CBytes description, const CPassWord& passWord) {
    constexpr std::uint32_t aesFlag = 0x20;
    const SCryptoApi api = ReadCryptoApi(description);
    if (api.algorithm == SCryptoApi::rc4)
        return DecodeRc4(CRc4Keys::MakeCryptoApi(api, passWord));
    const bool isOfPackages = (ReadU32(description.data()) & aesFlag) != 0;
    const auto aes =
        std::make_shared<CStandardEncryption>(api, isOfPackages ? CStandardEncryption::packageSpinCount : 0);
    aes->Unlock(passWord);
    return [aes](std::uint32_t number, std::span<unsigned char> bytes) {
        aes->SelectBlock(number);
        aes->Decrypt(bytes);
    };
}

FDecryptBlock Decode(CBytes description, const CPassWord& passWord) {
    using enum SEncryptionInfo::EScheme;
    const SEncryptionInfo info = ReadEncryptionInfo(description, {Rc4Of40Bits, CryptoApi, Agile});
    if (info.scheme == Agile)
        return DecodeAgile(info.description, passWord);
    if (info.scheme == CryptoApi)
        return DecodeCryptoApi(info.description, passWord);
    return DecodeRc4(CRc4Keys::Make40Bit(info.description, passWord));
}

/// The key of a page is made of its number combined with the key of the database.
FDecryptBlock CombineNumbers(std::uint32_t key, FDecryptBlock decode) {
    return [key, decode = std::move(decode)](std::uint32_t page, std::span<unsigned char> bytes) {
        decode(key ^ page, bytes);
    };
}

} // namespace

FDecryptBlock MakePageDecoder(std::uint32_t key, CBytes description, const std::string& passWord) {
    const CPassWord secret(passWord, Platform::DB_SEC_E_AUTH_FAILED);
    // Databases are never encrypted with a default password.
    if (passWord.empty())
        secret.Refuse();
    return CombineNumbers(key, Decode(description, secret));
}

/// The key is in the file, so this is only obfuscation.
FDecryptBlock MakeJetPageDecoder(std::uint32_t key) {
    return CombineNumbers(
        key, [](std::uint32_t number, std::span<unsigned char> bytes) { CRc4(LittleEndian32(number)).Apply(bytes); });
}

} // namespace NSTQ::Providers
