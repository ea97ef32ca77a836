// Records that are encrypted with RC4. The key changes with every 1024 bytes of the stream; bytes that are not
// encrypted count as well.
#pragma once

#include "providers/encryption/CRc4.h"
#include "providers/encryption/CRc4Keys.h"
#include "providers/encryption/IRecordCipher.h"

#include <optional>

namespace NSTQ::Providers {

class CRc4RecordCipher : public IRecordCipher {
public:
    explicit CRc4RecordCipher(CRc4Keys keys) : m_keys(std::move(keys)) {}

    void Decrypt(std::span<unsigned char> bytes, std::uint64_t streamPosition, std::uint16_t recordSize) override;

private:
    static constexpr std::uint64_t blockSize = 1024;

    void GoTo(std::uint64_t position);

    CRc4Keys m_keys;
    std::optional<CRc4> m_cipher; ///< for m_block, where m_position is in it or at its end
    std::uint64_t m_block = 0;
    std::uint64_t m_position = 0;
};

} // namespace NSTQ::Providers
