#include "providers/common/CByteReader.h"
#include "providers/encryption/CRc4RecordCipher.h"
#include "providers/encryption/CXorRecordCipher.h"
#include "providers/encryption/Encryption.h"
#include "providers/encryption/SEncryptionInfo.h"

namespace NSTQ::Providers {

namespace {

std::unique_ptr<IRecordCipher> MakeXorCipher(CByteReader& reader, const CPassWord& passWord) {
    const auto key = reader.Take<std::uint16_t>();
    const auto verifier = reader.Take<std::uint16_t>();
    if (!reader.IsGood())
        FailWithDamagedEncryption();
    auto cipher = std::make_unique<CXorRecordCipher>(passWord.Ansi());
    if (!cipher->IsRight(key, verifier))
        passWord.Refuse();
    return cipher;
}

std::unique_ptr<IRecordCipher> MakeRc4Cipher(std::span<const unsigned char> bytes, const CPassWord& passWord) {
    using enum SEncryptionInfo::EScheme;
    const SEncryptionInfo info = ReadEncryptionInfo(bytes, {Rc4Of40Bits, CryptoApi});
    return std::make_unique<CRc4RecordCipher>(info.scheme == CryptoApi
                                                  ? CRc4Keys::MakeCryptoApi(ReadCryptoApi(info.description), passWord)
                                                  : CRc4Keys::Make40Bit(info.description, passWord));
}

} // namespace

std::unique_ptr<IRecordCipher> MakeRecordCipher(std::span<const unsigned char> filePassRecord, bool isBiff8,
                                                const std::string& passWord) {
    enum : std::uint16_t { Xor = 0, Rc4 = 1 };
    const CPassWord secret(passWord);
    CByteReader reader(filePassRecord);
    // Older files have only one method and do not name it.
    const std::uint16_t kind = isBiff8 ? reader.Take<std::uint16_t>() : std::uint16_t{Xor};
    if (kind == Xor)
        return MakeXorCipher(reader, secret);
    if (kind == Rc4)
        return MakeRc4Cipher(reader.TakeBytes(reader.Left()), secret);
    FailWithUnknownEncryption("kind " + std::to_string(kind));
}

} // namespace NSTQ::Providers
