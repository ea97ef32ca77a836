#include "providers/encryption/CRecordCipher.h"

#include "providers/common/CByteReader.h"
#include "providers/common/CSourceError.h"
#include "providers/encryption/CRc4RecordCipher.h"
#include "providers/encryption/CXorRecordCipher.h"

namespace NSTQ::Providers {

namespace {

std::unique_ptr<IRecordCipher> MakeXorCipher(CByteReader& reader, const CPassWord& passWord) {
    const auto key = reader.Take<std::uint16_t>();
    const auto verifier = reader.Take<std::uint16_t>();
    if (!reader.IsGood())
        throw CSourceError("the description of its encryption is damaged");
    auto cipher = std::make_unique<CXorRecordCipher>(passWord.Ansi());
    if (!cipher->IsRight(key, verifier))
        passWord.Refuse();
    return cipher;
}

std::unique_ptr<IRecordCipher> MakeRc4Cipher(CByteReader& reader, const CPassWord& passWord) {
    const auto major = reader.Take<std::uint16_t>();
    const auto minor = reader.Take<std::uint16_t>();
    const auto description = reader.TakeBytes(reader.Left());
    const bool isCryptoApi = major >= 2 && major <= 4 && minor == 2;
    if (!isCryptoApi && (major != 1 || minor != 1))
        throw CSourceError("encrypted in an unknown way");
    CRc4Keys keys = isCryptoApi ? CRc4Keys::MakeCryptoApi(ReadCryptoApi(description), passWord)
                                : CRc4Keys::Make40Bit(description, passWord);
    if (!keys.IsRight())
        passWord.Refuse();
    return std::make_unique<CRc4RecordCipher>(std::move(keys));
}

} // namespace

std::unique_ptr<IRecordCipher> MakeRecordCipher(std::span<const unsigned char> filePassRecord, bool isBiff8,
                                                const std::string& passWord) {
    enum : std::uint16_t { Xor = 0, Rc4 = 1 };
    const CPassWord secret(passWord);
    CByteReader reader(filePassRecord);
    // Older files know one kind only and do not name it.
    const std::uint16_t kind = isBiff8 ? reader.Take<std::uint16_t>() : std::uint16_t{Xor};
    if (kind == Xor)
        return MakeXorCipher(reader, secret);
    if (kind == Rc4)
        return MakeRc4Cipher(reader, secret);
    throw CSourceError("encrypted in an unknown way");
}

} // namespace NSTQ::Providers
