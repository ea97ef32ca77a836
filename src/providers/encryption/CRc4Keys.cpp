#include "providers/encryption/CRc4Keys.h"

#include "providers/common/CByteReader.h"
#include "providers/encryption/CRc4.h"
#include "providers/encryption/SEncryptionInfo.h"

#include <algorithm>

namespace NSTQ::Providers {

namespace {

constexpr std::size_t fullKeySize = 16;
constexpr std::size_t shortKeySize = 5;

} // namespace

CRc4Keys CRc4Keys::Make40Bit(std::span<const unsigned char> description, const CPassWord& passWord) {
    constexpr int repetitions = 16;
    CByteReader reader(description);
    const auto salt = reader.TakeBytes(16);
    const auto verifier = reader.TakeBytes(16);
    const auto verifierHash = reader.TakeBytes(16);
    if (!reader.IsGood())
        FailWithDamagedEncryption();
    CHash hash(EHash::Md5);
    const CSecretBytes begin = hash.Of({passWord.Wide()}).Resized(shortKeySize, 0);
    std::vector<unsigned char> repeated;
    for (int i = 0; i < repetitions; ++i) {
        repeated.insert(repeated.end(), begin.Bytes().begin(), begin.Bytes().end());
        repeated.insert(repeated.end(), salt.begin(), salt.end());
    }
    CRc4Keys keys(EHash::Md5, hash.Of({repeated}).Resized(shortKeySize, 0), fullKeySize);
    Wipe(repeated);
    if (!keys.Opens(verifier, verifierHash))
        passWord.Refuse();
    return keys;
}

CRc4Keys CRc4Keys::MakeCryptoApi(const SCryptoApi& description, const CPassWord& passWord) {
    if (description.algorithm != SCryptoApi::rc4 || description.keySize < shortKeySize ||
        description.keySize > fullKeySize)
        FailWithUnknownAlgorithm(description);
    CHash hash(EHash::Sha1);
    CRc4Keys keys(EHash::Sha1, hash.Of({description.salt, passWord.Wide()}), description.keySize);
    if (!keys.Opens(description.verifier, description.verifierHash))
        passWord.Refuse();
    return keys;
}

CSecretBytes CRc4Keys::BlockKey(std::uint32_t block) {
    const CSecretBytes key = HashBlock(m_hash, m_passWordHash, block).Resized(m_keySize, 0);
    // The shortest keys are padded, all others are used unchanged.
    return m_keySize == shortKeySize ? key.Resized(fullKeySize, 0) : key;
}

/// Whether the keys are those with which the verifier was encrypted.
bool CRc4Keys::Opens(std::span<const unsigned char> verifier, std::span<const unsigned char> verifierHash) {
    const CSecretBytes key = BlockKey(0);
    CRc4 cipher(key.Bytes());
    CSecretBytes plain(verifier.size());
    std::ranges::copy(verifier, plain.Bytes().begin());
    cipher.Apply(plain.Bytes());
    CSecretBytes digest(m_hash.Size());
    std::ranges::copy(verifierHash.first(m_hash.Size()), digest.Bytes().begin());
    cipher.Apply(digest.Bytes());
    return std::ranges::equal(digest.Bytes(), m_hash.Of({plain.Bytes()}).Bytes());
}

} // namespace NSTQ::Providers
