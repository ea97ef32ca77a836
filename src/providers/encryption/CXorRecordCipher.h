// Records that are obfuscated: every byte rotated and combined with one of 16 bytes that the password gives.
#pragma once

#include "providers/encryption/CSecretBytes.h"
#include "providers/encryption/IRecordCipher.h"

namespace NSTQ::Providers {

class CXorRecordCipher : public IRecordCipher {
public:
    /// `passWord` in the ANSI code page; only its first 15 bytes count.
    explicit CXorRecordCipher(std::span<const unsigned char> passWord);

    /// Whether the password gives the two verification numbers of the file.
    bool IsRight(std::uint16_t key, std::uint16_t verifier) const { return key == m_key && verifier == m_verifier; }

    void Decrypt(std::span<unsigned char> bytes, std::uint64_t streamPosition, std::uint16_t recordSize) override;

private:
    std::uint16_t m_key;
    std::uint16_t m_verifier;
    CSecretBytes m_pattern;
};

} // namespace NSTQ::Providers
