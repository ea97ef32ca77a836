#include "providers/encryption/EncryptedPackage.h"

#include "providers/common/CByteReader.h"
#include "providers/common/CSourceError.h"
#include "providers/encryption/CAgileEncryption.h"
#include "providers/encryption/CDecryptedPackage.h"
#include "providers/encryption/CPassWord.h"
#include "providers/encryption/CStandardEncryption.h"

namespace NSTQ::Providers {

namespace {

constexpr std::uint64_t maxDescriptionSize = 1U << 20;

FDecryptSegment UnlockAgile(std::span<const unsigned char> description, const CPassWord& passWord) {
    // A number without meaning stands before the descriptor.
    const auto encryption =
        std::make_shared<CAgileEncryption>(description.subspan(std::min<std::size_t>(4, description.size())));
    if (!encryption->Unlock(passWord.Wide()))
        passWord.Refuse();
    return [encryption](std::uint32_t index, std::span<unsigned char> bytes) {
        encryption->DecryptBlock(LittleEndian32(index), bytes);
    };
}

FDecryptSegment UnlockStandard(std::span<const unsigned char> description, const CPassWord& passWord) {
    const auto encryption = std::make_shared<CStandardEncryption>(ReadCryptoApi(description));
    if (!encryption->Unlock(passWord.Wide()))
        passWord.Refuse();
    return [encryption](std::uint32_t, std::span<unsigned char> bytes) { encryption->Decrypt(bytes); };
}

FDecryptSegment Unlock(std::span<const unsigned char> description, const CPassWord& passWord) {
    CByteReader reader(description);
    const auto major = reader.Take<std::uint16_t>();
    const auto minor = reader.Take<std::uint16_t>();
    const auto rest = reader.TakeBytes(reader.Left());
    if (major == 4 && minor == 4)
        return UnlockAgile(rest, passWord);
    if (major >= 2 && major <= 4 && minor == 2)
        return UnlockStandard(rest, passWord);
    throw CSourceError("encrypted in an unknown way (version " + std::to_string(major) + '.' + std::to_string(minor) +
                       ")");
}

} // namespace

std::shared_ptr<IRandomAccess> OpenEncryptedPackage(CCompoundFile& file, const std::string& passWord) {
    const auto info = file.OpenStream(u"EncryptionInfo");
    if (info->Size() > maxDescriptionSize)
        throw CSourceError("the description of its encryption is too large");
    std::vector<unsigned char> description(static_cast<std::size_t>(info->Size()));
    info->ReadAt(0, description);
    auto package = file.OpenSelfSized(u"EncryptedPackage");
    return std::make_shared<CDecryptedPackage>(std::move(package), Unlock(description, CPassWord(passWord)));
}

} // namespace NSTQ::Providers
