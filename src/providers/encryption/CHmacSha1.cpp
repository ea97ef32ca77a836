#include "providers/encryption/CHmacSha1.h"

namespace NSTQ::Providers {

namespace {

/// The key with the size of a block of the digest, each byte combined with `with`.
CSecretBytes PadKey(std::span<const unsigned char> key, unsigned char with) {
    CSecretBytes padded(CSecretBytes::maxSize, with);
    for (std::size_t i = 0; i < key.size(); ++i)
        padded.Bytes()[i] ^= key[i];
    return padded;
}

} // namespace

CHmacSha1::CHmacSha1(std::span<const unsigned char> key) : m_outerKey(PadKey(key, 0x5C)) {
    m_hash.Add(PadKey(key, 0x36).Bytes());
}

CSecretBytes CHmacSha1::End() {
    CSecretBytes inner(m_hash.Size());
    m_hash.End(inner.Bytes());
    return m_hash.Of({m_outerKey.Bytes(), inner.Bytes()});
}

} // namespace NSTQ::Providers
