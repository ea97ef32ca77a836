// What Windows supplies. This unit alone includes its headers.
#include "providers/encryption/SystemCrypto.h"

// The order matters: the second needs the types of the first.
#include <windows.h>

#include <bcrypt.h>

#include <algorithm>
#include <array>

namespace NSTQ::Providers {

namespace {

/// A handle and the call that closes it, which takes the handle and, for some kinds, flags.
template <class THandle, auto TClose>
class CHandle {
public:
    CHandle() = default;
    CHandle(const CHandle&) = delete;
    CHandle& operator=(const CHandle&) = delete;
    ~CHandle() {
        if (m_handle != nullptr)
            TClose(m_handle);
    }
    THandle* Address() { return &m_handle; }
    THandle Get() const { return m_handle; }

private:
    THandle m_handle = nullptr;
};

NTSTATUS CloseProvider(BCRYPT_ALG_HANDLE provider) {
    return BCryptCloseAlgorithmProvider(provider, 0);
}

/// Parameters of input are not const there, but not changed either.
PUCHAR ToInput(const void* bytes) {
    return static_cast<PUCHAR>(const_cast<void*>(bytes));
}

/// An algorithm. Opening one takes longer than a key, so each is opened once for the process.
class CProvider {
public:
    explicit CProvider(const wchar_t* name, ULONG flags = 0, std::wstring_view chaining = {})
        : m_isOpen(BCryptOpenAlgorithmProvider(m_handle.Address(), name, nullptr, flags) == 0) {
        // With the NUL that ends a literal.
        const auto size = static_cast<ULONG>((chaining.size() + 1) * sizeof(wchar_t));
        if (!chaining.empty() && m_isOpen)
            m_isOpen =
                BCryptSetProperty(m_handle.Get(), BCRYPT_CHAINING_MODE, ToInput(chaining.data()), size, 0) == 0;
    }
    BCRYPT_ALG_HANDLE Get(const char* what) const {
        RequireCrypto(m_isOpen, what);
        return m_handle.Get();
    }

private:
    CHandle<BCRYPT_ALG_HANDLE, CloseProvider> m_handle;
    bool m_isOpen;
};

BCRYPT_ALG_HANDLE DigestProvider(EHash hash) {
    static const CProvider md5(BCRYPT_MD5_ALGORITHM);
    static const CProvider sha1(BCRYPT_SHA1_ALGORITHM);
    static const CProvider sha256(BCRYPT_SHA256_ALGORITHM);
    static const CProvider sha384(BCRYPT_SHA384_ALGORITHM);
    static const CProvider sha512(BCRYPT_SHA512_ALGORITHM);
    switch (hash) {
    case EHash::Md5:
        return md5.Get("MD5");
    case EHash::Sha1:
        return sha1.Get("SHA1");
    case EHash::Sha256:
        return sha256.Get("SHA256");
    case EHash::Sha384:
        return sha384.Get("SHA384");
    default:
        return sha512.Get("SHA512");
    }
}

BCRYPT_ALG_HANDLE AesProvider() {
    static const CProvider provider(BCRYPT_AES_ALGORITHM, 0, BCRYPT_CHAIN_MODE_ECB);
    return provider.Get("AES");
}

constexpr std::size_t maxPart = std::size_t{1} << 30;

class CDigest : public ISystemDigest {
public:
    explicit CDigest(EHash hash) {
        RequireCrypto(BCryptCreateHash(DigestProvider(hash), m_hash.Address(), nullptr, 0, nullptr, 0,
                                       BCRYPT_HASH_REUSABLE_FLAG) == 0,
                      "a digest that is used again");
    }
    void Add(std::span<const unsigned char> bytes) override {
        while (!bytes.empty()) {
            const auto part = bytes.first(std::min(bytes.size(), maxPart));
            RequireCrypto(BCryptHashData(m_hash.Get(), ToInput(part.data()), static_cast<ULONG>(part.size()), 0) == 0,
                          "a digest");
            bytes = bytes.subspan(part.size());
        }
    }
    void End(std::span<unsigned char> target) override {
        RequireCrypto(BCryptFinishHash(m_hash.Get(), target.data(), static_cast<ULONG>(target.size()), 0) == 0,
                      "a digest");
    }

private:
    CHandle<BCRYPT_HASH_HANDLE, BCryptDestroyHash> m_hash;
};

/// Chains are made here of single blocks: whether a key object goes on with its own chain, when it is called with the
/// vector that it had last, is not the same in all implementations.
class CAes : public ISystemAes {
public:
    CAes(std::span<const unsigned char> key, EAes use) : m_use(use) {
        RequireCrypto((key.size() == 16 || key.size() == 24 || key.size() == 32) &&
                          BCryptGenerateSymmetricKey(AesProvider(), m_key.Address(), nullptr, 0, ToInput(key.data()),
                                                     static_cast<ULONG>(key.size()), 0) == 0,
                      "AES");
    }
    void Apply(std::span<const unsigned char> start, std::span<unsigned char> bytes) override {
        if (m_use == EAes::DecryptChain)
            return DecryptChain(start, bytes);
        while (!bytes.empty()) {
            const auto part = bytes.first(std::min(bytes.size(), maxPart));
            ApplyBlocks(part);
            bytes = bytes.subspan(part.size());
        }
    }

private:
    static constexpr std::size_t blockSize = 16;

    void ApplyBlocks(std::span<unsigned char> bytes) {
        const auto call = m_use == EAes::EncryptBlocks ? &BCryptEncrypt : &BCryptDecrypt;
        const auto size = static_cast<ULONG>(bytes.size());
        ULONG count = 0;
        RequireCrypto(call(m_key.Get(), bytes.data(), size, nullptr, nullptr, 0, bytes.data(), size, &count, 0) ==
                              0 &&
                          count == size,
                      "AES");
    }
    /// Each decrypted block is combined with the encrypted one before it.
    void DecryptChain(std::span<const unsigned char> start, std::span<unsigned char> bytes) {
        std::array<unsigned char, 4096 + blockSize> before;
        std::copy_n(start.begin(), blockSize, before.begin());
        while (!bytes.empty()) {
            const auto part = bytes.first(std::min(bytes.size(), before.size() - blockSize));
            std::ranges::copy(part, before.begin() + blockSize);
            ApplyBlocks(part);
            for (std::size_t i = 0; i < part.size(); ++i)
                part[i] ^= before[i];
            std::copy_n(before.begin() + static_cast<std::ptrdiff_t>(part.size()), blockSize, before.begin());
            bytes = bytes.subspan(part.size());
        }
    }

    EAes m_use;
    CHandle<BCRYPT_KEY_HANDLE, BCryptDestroyKey> m_key;
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
    constexpr const char* what = "the derivation of keys";
    static const CProvider hmac(BCRYPT_SHA1_ALGORITHM, BCRYPT_ALG_HANDLE_HMAC_FLAG);
    RequireCrypto(BCryptDeriveKeyPBKDF2(hmac.Get(what), ToInput(passWord.data()), static_cast<ULONG>(passWord.size()),
                                        ToInput(salt.data()), static_cast<ULONG>(salt.size()), rounds, target.data(),
                                        static_cast<ULONG>(target.size()), 0) == 0,
                  what);
}

} // namespace NSTQ::Providers
