// The port of this folder to what a system supplies: digests, AES and the derivation of keys. libcrypto/ has it for
// libcrypto, bcrypt/ for Windows; the build takes one of them, and nothing else includes their headers.
//
// Each object is used by one thread at a time. All throw CSourceError when the system refuses, which it may do for
// MD5, for example.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

namespace NSTQ::Providers {

enum class EHash { Md5, Sha1, Sha256, Sha384, Sha512 };

/// The size of such a digest in bytes.
constexpr std::size_t DigestSize(EHash hash) {
    constexpr std::size_t sizes[] = {16, 20, 32, 48, 64};
    return sizes[static_cast<std::size_t>(hash)];
}

/// Computes digests, one after another.
class ISystemDigest {
public:
    virtual ~ISystemDigest() = default;
    virtual void Add(std::span<const unsigned char> bytes) = 0;
    /// Puts the digest of what was added into `target`, which has its size, and begins the next one.
    virtual void End(std::span<unsigned char> target) = 0;
};
std::unique_ptr<ISystemDigest> MakeSystemDigest(EHash hash);

/// What AES does with whole blocks of 16 bytes: encrypts or decrypts each by itself, or decrypts them chained (CBC).
enum class EAes { EncryptBlocks, DecryptBlocks, DecryptChain };

class ISystemAes {
public:
    virtual ~ISystemAes() = default;
    /// Works in place on whole blocks. `start` is the initialisation vector of 16 bytes for a chain, else ignored.
    virtual void Apply(std::span<const unsigned char> start, std::span<unsigned char> bytes) = 0;
};
/// `key` has 16, 24 or 32 bytes; CSourceError for any other.
std::unique_ptr<ISystemAes> MakeSystemAes(std::span<const unsigned char> key, EAes use);

/// Derives key bytes from a password by PBKDF2 with HMAC-SHA-1: as many as `target` has.
void DeriveKeySha1(std::string_view passWord, std::span<const unsigned char> salt, std::uint32_t rounds,
                   std::span<unsigned char> target);

/// Throws CSourceError, naming `what`, when the system refused it.
void RequireCrypto(bool isDone, const char* what);

} // namespace NSTQ::Providers
