// HMAC with SHA-1: an authentication code, computed over one part after another.
#pragma once

#include "providers/encryption/CHash.h"

namespace NSTQ::Providers {

class CHmacSha1 {
public:
    /// A key of up to 64 bytes.
    explicit CHmacSha1(std::span<const unsigned char> key);

    void Add(std::span<const unsigned char> bytes) { m_hash.Add(bytes); }
    /// The code of all that was added, 20 bytes. Call it once, as the last.
    CSecretBytes End();

private:
    CHash m_hash{EHash::Sha1};
    CSecretBytes m_outerKey;
};

} // namespace NSTQ::Providers
