// Digests. One object computes any number of them, one after another.
#pragma once

#include "providers/encryption/CSecretBytes.h"
#include "providers/encryption/SystemCrypto.h"

#include <cstdint>
#include <initializer_list>

namespace NSTQ::Providers {

class CHash {
public:
    using TBytes = std::span<const unsigned char>;

    /// Throws CSourceError when the system does not allow this digest.
    explicit CHash(EHash hash) : m_kind(hash), m_digest(MakeSystemDigest(hash)) {}

    std::size_t Size() const { return DigestSize(m_kind); }
    /// The digest of the concatenated parts.
    CSecretBytes Of(std::initializer_list<TBytes> parts);
    /// The same into `target`, which has Size() bytes and may be one of the parts.
    void Into(std::span<unsigned char> target, std::initializer_list<TBytes> parts);
    /// The same for parts that come one after another: End puts the digest of those added since the previous one into
    /// `target`.
    void Add(TBytes part) { m_digest->Add(part); }
    void End(std::span<unsigned char> target) { m_digest->End(target); }

    /// The digest of salt and password, hashed `spinCount` more times after the number of the round, which makes
    /// guessing passwords slow. CSpunDigests keeps it for the next time.
    CSecretBytes Spin(TBytes salt, TBytes passWord, std::uint32_t spinCount);

private:
    EHash m_kind;
    std::unique_ptr<ISystemDigest> m_digest;
};

/// A number as these schemes hash it: four bytes, little-endian.
inline std::array<unsigned char, 4> LittleEndian32(std::uint32_t value) {
    const auto byte = [value](unsigned shift) { return static_cast<unsigned char>(value >> shift); };
    return {byte(0), byte(8), byte(16), byte(24)};
}

} // namespace NSTQ::Providers
