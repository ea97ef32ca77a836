#include "providers/encryption/CAesCipher.h"

#include <algorithm>
#include <openssl/evp.h>

namespace NSTQ::Providers {

namespace {

const EVP_CIPHER* FindCipher(std::size_t keySize, bool isChained) {
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

} // namespace

CAesCipher::CAesCipher(std::span<const unsigned char> key, EChaining chaining) : m_context(EVP_CIPHER_CTX_new()) {
    const EVP_CIPHER* cipher = FindCipher(key.size(), chaining == EChaining::Cbc);
    CheckLibCrypto(cipher != nullptr && m_context != nullptr &&
                       EVP_DecryptInit_ex(m_context.get(), cipher, nullptr, key.data(), nullptr) == 1,
                   "AES");
}

void CAesCipher::Decrypt(std::span<const unsigned char> start, std::span<unsigned char> bytes) {
    bool isDone = bytes.size() % blockSize == 0 &&
                  EVP_DecryptInit_ex(m_context.get(), nullptr, nullptr, nullptr, start.data()) == 1 &&
                  EVP_CIPHER_CTX_set_padding(m_context.get(), 0) == 1;
    while (isDone && !bytes.empty()) {
        const auto part = bytes.first(std::min<std::size_t>(bytes.size(), 1U << 30));
        int done = 0;
        isDone =
            EVP_DecryptUpdate(m_context.get(), part.data(), &done, part.data(), static_cast<int>(part.size())) == 1 &&
            done == static_cast<int>(part.size());
        bytes = bytes.subspan(part.size());
    }
    CheckLibCrypto(isDone, "AES");
}

} // namespace NSTQ::Providers
