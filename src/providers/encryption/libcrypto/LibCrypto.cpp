// What libcrypto supplies. This unit alone includes its headers.
#include "providers/encryption/SystemCrypto.h"

#include <openssl/evp.h>

#include <algorithm>

namespace NSTQ::Providers {

namespace {

template <auto TFree>
struct SFree {
    template <class TObject>
    void operator()(TObject* object) const {
        TFree(object);
    }
};

class CDigest : public ISystemDigest {
public:
    explicit CDigest(EHash hash)
        : m_kind(EVP_MD_fetch(nullptr, names[static_cast<std::size_t>(hash)], nullptr)), m_context(EVP_MD_CTX_new()) {
        RequireCrypto(m_kind != nullptr && m_context != nullptr, names[static_cast<std::size_t>(hash)]);
        Begin();
    }
    void Add(std::span<const unsigned char> bytes) override {
        RequireCrypto(EVP_DigestUpdate(m_context.get(), bytes.data(), bytes.size()) == 1, "a digest");
    }
    void End(std::span<unsigned char> target) override {
        RequireCrypto(EVP_DigestFinal_ex(m_context.get(), target.data(), nullptr) == 1, "a digest");
        Begin();
    }

private:
    static constexpr const char* names[] = {"MD5", "SHA1", "SHA256", "SHA384", "SHA512"};

    void Begin() { RequireCrypto(EVP_DigestInit_ex2(m_context.get(), m_kind.get(), nullptr) == 1, "a digest"); }

    std::unique_ptr<EVP_MD, SFree<EVP_MD_free>> m_kind;
    std::unique_ptr<EVP_MD_CTX, SFree<EVP_MD_CTX_free>> m_context;
};

const EVP_CIPHER* FindAes(std::size_t keySize, bool isChained) {
    switch (keySize) {
    case 16:
        return isChained ? EVP_aes_128_cbc() : EVP_aes_128_ecb();
    case 24:
        return isChained ? EVP_aes_192_cbc() : EVP_aes_192_ecb();
    case 32:
        return isChained ? EVP_aes_256_cbc() : EVP_aes_256_ecb();
    default:
        return nullptr;
    }
}

class CAes : public ISystemAes {
public:
    CAes(std::span<const unsigned char> key, EAes use)
        : m_isEncrypting(use == EAes::EncryptBlocks ? 1 : 0), m_context(EVP_CIPHER_CTX_new()) {
        const EVP_CIPHER* const cipher = FindAes(key.size(), use == EAes::DecryptChain);
        RequireCrypto(cipher != nullptr && m_context != nullptr &&
                          EVP_CipherInit_ex(m_context.get(), cipher, nullptr, key.data(), nullptr, m_isEncrypting) ==
                              1,
                      "AES");
    }
    void Apply(std::span<const unsigned char> start, std::span<unsigned char> bytes) override {
        bool isDone =
            EVP_CipherInit_ex(m_context.get(), nullptr, nullptr, nullptr, start.data(), m_isEncrypting) == 1 &&
            EVP_CIPHER_CTX_set_padding(m_context.get(), 0) == 1;
        while (isDone && !bytes.empty()) {
            const auto part = bytes.first(std::min<std::size_t>(bytes.size(), 1U << 30));
            int count = 0;
            isDone = EVP_CipherUpdate(m_context.get(), part.data(), &count, part.data(),
                                      static_cast<int>(part.size())) == 1 &&
                     count == static_cast<int>(part.size());
            bytes = bytes.subspan(part.size());
        }
        RequireCrypto(isDone, "AES");
    }

private:
    int m_isEncrypting;
    std::unique_ptr<EVP_CIPHER_CTX, SFree<EVP_CIPHER_CTX_free>> m_context;
};

} // namespace

std::unique_ptr<ISystemDigest> MakeSystemDigest(EHash hash) {
    return std::make_unique<CDigest>(hash);
}

std::unique_ptr<ISystemAes> MakeSystemAes(std::span<const unsigned char> key, EAes use) {
    return std::make_unique<CAes>(key, use);
}

void DeriveKeySha1(std::string_view passWord, std::span<const unsigned char> salt, std::uint32_t rounds,
                   std::span<unsigned char> target) {
    RequireCrypto(PKCS5_PBKDF2_HMAC(passWord.data(), static_cast<int>(passWord.size()), salt.data(),
                                    static_cast<int>(salt.size()), static_cast<int>(rounds), EVP_sha1(),
                                    static_cast<int>(target.size()), target.data()) == 1,
                  "the derivation of keys");
}

} // namespace NSTQ::Providers
