// Digests. One object computes any number of them, one after another.
#pragma once

#include "providers/encryption/CSecretBytes.h"
#include "providers/encryption/LibCrypto.h"

#include <cstdint>
#include <initializer_list>

namespace NSTQ::Providers {

enum class EHash { Md5, Sha1, Sha256, Sha384, Sha512 };

class CHash {
public:
    using TBytes = std::span<const unsigned char>;

    /// Throws CSourceError when the system does not allow this digest.
    explicit CHash(EHash hash);

    std::size_t Size() const { return m_size; }
    /// The digest of the concatenated parts.
    CSecretBytes Of(std::initializer_list<TBytes> parts);
    /// The same into `target`, which has Size() bytes and may be one of the parts.
    void Into(std::span<unsigned char> target, std::initializer_list<TBytes> parts);

    /// The digest of salt and password, hashed `spinCount` more times after the number of the round, which makes
    /// guessing passwords slow. CSpunDigests keeps it for the next time.
    CSecretBytes Spin(TBytes salt, TBytes passWord, std::uint32_t spinCount);

private:
    EHash m_kind;
    TLibCryptoPtr<evp_md_st> m_digest;
    TLibCryptoPtr<evp_md_ctx_st> m_context;
    std::size_t m_size;
};

/// A number as these schemes hash it: four bytes, little-endian.
inline std::array<unsigned char, 4> LittleEndian32(std::uint32_t value) {
    const auto byte = [value](unsigned shift) { return static_cast<unsigned char>(value >> shift); };
    return {byte(0), byte(8), byte(16), byte(24)};
}

} // namespace NSTQ::Providers
