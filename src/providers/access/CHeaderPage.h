// The first page of a database: format, encoding of texts, password and encryption.
//
// Most of it is masked with the first bytes of an RC4 stream whose key is the same for all databases.
#pragma once

#include "providers/access/SJetFormat.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>

namespace NSTQ::Providers {

class CHeaderPage {
public:
    /// The number of bytes of the page that are read.
    static constexpr std::size_t size = 0x18 + 128;

    /// `bytes` is the beginning of the file. Throws CSourceError when it is not a database of a known version.
    explicit CHeaderPage(std::span<const unsigned char, size> bytes);

    /// Jet 3 and 4, whose password is stored in the header; the password of ACE decrypts the database.
    bool IsJet() const { return GetVersion() < 2; }
    const SJetFormat& GetFormat() const { return GetVersion() == 0 ? jet3Format : jet4Format; }
    /// The code page of the texts of a Jet 3 database.
    unsigned GetCodePage() const;
    /// Pages are encoded or encrypted with this key; 0 when they are not.
    std::uint32_t GetKey() const;
    /// The password of a Jet database as it is stored; empty when it has none.
    std::u16string GetPassWord() const;

private:
    static constexpr std::size_t versionAt = 0x14;

    const unsigned char* At(std::size_t offset) const { return m_bytes.data() + offset; }
    unsigned GetVersion() const { return m_bytes[versionAt]; }

    std::array<unsigned char, size> m_bytes; ///< without the mask
};

} // namespace NSTQ::Providers
