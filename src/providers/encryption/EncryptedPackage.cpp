#include "providers/common/CSourceError.h"
#include "providers/encryption/CAgileEncryption.h"
#include "providers/encryption/CDecryptedPackage.h"
#include "providers/encryption/CStandardEncryption.h"
#include "providers/encryption/SEncryptionInfo.h"

namespace NSTQ::Providers {

namespace {

constexpr std::uint64_t maxDescriptionSize = 1U << 20;

FDecryptBlock Unlock(std::span<const unsigned char> description, const CPassWord& passWord) {
    using enum SEncryptionInfo::EScheme;
    const SEncryptionInfo info = ReadEncryptionInfo(description, {CryptoApi, Agile});
    if (info.scheme == Agile) {
        const auto agile = std::make_shared<CAgileEncryption>(info.description);
        agile->Unlock(passWord);
        return [agile](std::uint32_t number, std::span<unsigned char> bytes) { agile->DecryptBlock(number, bytes); };
    }
    const auto aes = std::make_shared<CStandardEncryption>(ReadCryptoApi(info.description));
    aes->Unlock(passWord);
    return [aes](std::uint32_t, std::span<unsigned char> bytes) { aes->Decrypt(bytes); };
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
