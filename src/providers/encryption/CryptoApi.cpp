#include "providers/encryption/CryptoApi.h"

#include "providers/common/CByteReader.h"
#include "providers/encryption/SEncryptionInfo.h"

#include <algorithm>

namespace NSTQ::Providers {

SCryptoApi ReadCryptoApi(std::span<const unsigned char> bytes) {
    constexpr std::uint32_t sha1 = 0x8004;
    constexpr std::uint32_t isAes = 0x20;
    constexpr std::uint32_t aes128 = 0x660E;
    CByteReader reader(bytes);
    reader.Skip(4);
    CByteReader header(reader.TakeBytes(reader.Take<std::uint32_t>()));
    const auto flags = header.Take<std::uint32_t>();
    header.Skip(4);
    SCryptoApi info = {};
    info.algorithm = header.Take<std::uint32_t>();
    if (info.algorithm == 0)
        info.algorithm = (flags & isAes) != 0 ? aes128 : SCryptoApi::rc4;
    const auto hashAlgorithm = header.Take<std::uint32_t>();
    const auto keyBits = header.Take<std::uint32_t>();
    const bool isHeaderGood = header.IsGood();
    const auto saltSize = reader.Take<std::uint32_t>();
    std::ranges::copy(reader.TakeBytes(info.salt.size()), info.salt.begin());
    std::ranges::copy(reader.TakeBytes(info.verifier.size()), info.verifier.begin());
    const auto hashSize = reader.Take<std::uint32_t>();
    const std::size_t hashRoom = info.algorithm == SCryptoApi::rc4 ? 20 : 32;
    std::ranges::copy(reader.TakeBytes(hashRoom), info.verifierHash.begin());
    if (!isHeaderGood || !reader.IsGood() || saltSize != info.salt.size() || hashSize != 20 || keyBits > 256 ||
        keyBits % 8 != 0)
        FailWithDamagedEncryption();
    if (hashAlgorithm != sha1 && hashAlgorithm != 0)
        FailWithUnknownEncryption("digest " + std::to_string(hashAlgorithm));
    info.keySize = keyBits == 0 ? 5 : keyBits / 8;
    return info;
}

void FailWithUnknownAlgorithm(const SCryptoApi& description) {
    FailWithUnknownEncryption("algorithm " + std::to_string(description.algorithm) + " with a key of " +
                              std::to_string(description.keySize) + " bytes");
}

CSecretBytes HashBlock(CHash& hash, const CSecretBytes& passWordHash, std::uint32_t block) {
    return hash.Of({passWordHash.Bytes(), LittleEndian32(block)});
}

} // namespace NSTQ::Providers
