#include "providers/encryption/CHash.h"

#include "providers/encryption/CSpunDigests.h"

#include <openssl/evp.h>

namespace NSTQ::Providers {

namespace {

struct SHashKind {
    const char* name;
    std::size_t size;
};

/// In the order of EHash.
constexpr SHashKind kinds[] = {{"MD5", 16}, {"SHA1", 20}, {"SHA256", 32}, {"SHA384", 48}, {"SHA512", 64}};

} // namespace

CHash::CHash(EHash hash)
    : m_kind(hash), m_digest(EVP_MD_fetch(nullptr, kinds[static_cast<std::size_t>(hash)].name, nullptr)),
      m_context(EVP_MD_CTX_new()), m_size(kinds[static_cast<std::size_t>(hash)].size) {
    CheckLibCrypto(m_digest != nullptr && m_context != nullptr, kinds[static_cast<std::size_t>(hash)].name);
}

CSecretBytes CHash::Of(std::initializer_list<TBytes> parts) {
    CSecretBytes digest(m_size);
    Into(digest.Bytes(), parts);
    return digest;
}

void CHash::Into(std::span<unsigned char> target, std::initializer_list<TBytes> parts) {
    bool isDone = EVP_DigestInit_ex2(m_context.get(), m_digest.get(), nullptr) == 1;
    for (const TBytes part : parts)
        isDone = isDone && EVP_DigestUpdate(m_context.get(), part.data(), part.size()) == 1;
    CheckLibCrypto(isDone && EVP_DigestFinal_ex(m_context.get(), target.data(), nullptr) == 1, "a digest");
}

CSecretBytes CHash::Spin(TBytes salt, TBytes passWord, std::uint32_t spinCount) {
    const CSecretBytes first = Of({salt, passWord});
    if (const auto known = CSpunDigests::Get().Find(m_kind, spinCount, first))
        return *known;
    CSecretBytes digest = first;
    for (std::uint32_t round = 0; round < spinCount; ++round)
        Into(digest.Bytes(), {LittleEndian32(round), digest.Bytes()});
    CSpunDigests::Get().Keep(m_kind, spinCount, first, digest);
    return digest;
}

} // namespace NSTQ::Providers
