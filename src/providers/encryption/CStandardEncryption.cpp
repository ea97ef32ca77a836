#include "providers/encryption/CStandardEncryption.h"

#include <algorithm>

namespace NSTQ::Providers {

namespace {

struct SAes {
    std::uint32_t algorithm;
    std::size_t keySize;
};
constexpr SAes ciphers[] = {{0x660E, 16}, {0x660F, 24}, {0x6610, 32}};

/// Half of the material for keys: the digest of 64 equal bytes, the first of them combined with another digest.
CSecretBytes MakeHalf(CHash& hash, const CSecretBytes& digest, unsigned char filling) {
    CSecretBytes bytes(CSecretBytes::maxSize, filling);
    for (std::size_t i = 0; i < digest.Size(); ++i)
        bytes.Bytes()[i] ^= digest.Bytes()[i];
    return hash.Of({bytes.Bytes()});
}

CSecretBytes MakeKey(CHash& hash, const CSecretBytes& digest, std::size_t size) {
    const CSecretBytes first = MakeHalf(hash, digest, 0x36);
    const CSecretBytes second = MakeHalf(hash, digest, 0x5C);
    CSecretBytes key = first.Resized(first.Size() + second.Size(), 0);
    std::ranges::copy(second.Bytes(), key.Bytes().begin() + static_cast<std::ptrdiff_t>(first.Size()));
    return key.Resized(size, 0);
}

} // namespace

CStandardEncryption::CStandardEncryption(const SCryptoApi& description, std::uint32_t spinCount)
    : m_description(description), m_spinCount(spinCount) {
    const bool isKnown = std::ranges::any_of(ciphers, [&](const SAes& cipher) {
        return cipher.algorithm == description.algorithm && cipher.keySize == description.keySize;
    });
    if (!isKnown)
        FailWithUnknownAlgorithm(description);
}

void CStandardEncryption::Unlock(const CPassWord& passWord) {
    m_passWordHash = m_hash.Spin(m_description.salt, passWord.Wide(), m_spinCount);
    SelectBlock(0);
    auto verifier = m_description.verifier;
    auto verifierHash = m_description.verifierHash;
    Decrypt(verifier);
    Decrypt(verifierHash);
    if (!std::ranges::equal(m_hash.Of({verifier}).Bytes(), std::span(verifierHash).first(m_hash.Size())))
        passWord.Refuse();
}

void CStandardEncryption::SelectBlock(std::uint32_t block) {
    const CSecretBytes digest = HashBlock(m_hash, m_passWordHash, block);
    m_cipher.emplace(MakeKey(m_hash, digest, m_description.keySize).Bytes(), EAes::DecryptBlocks);
}

} // namespace NSTQ::Providers
