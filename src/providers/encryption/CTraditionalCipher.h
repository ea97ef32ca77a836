// The traditional encryption of zip archives (ZipCrypto): three numbers that each byte of the password and of the
// content changes. It is not secure, but archives that have it must still be read.
#pragma once

#include "providers/encryption/IEntryCipher.h"

#include <cstdint>
#include <string_view>

namespace NSTQ::Providers {

class CTraditionalCipher : public IEntryCipher {
public:
    /// The bytes that precede the content and are decrypted first; the last one tells most wrong passwords.
    static constexpr std::size_t headerSize = 12;

    explicit CTraditionalCipher(std::string_view passWord);
    CTraditionalCipher(const CTraditionalCipher&) = delete;
    CTraditionalCipher& operator=(const CTraditionalCipher&) = delete;
    /// Wipes the numbers.
    ~CTraditionalCipher() override;

    void Decrypt(std::span<unsigned char> bytes) override;

private:
    struct SKeys {
        std::uint32_t first = 0x12345678;
        std::uint32_t second = 0x23456789;
        std::uint32_t third = 0x34567890;

        void Update(unsigned char byte);
    };

    SKeys m_keys;
};

} // namespace NSTQ::Providers
