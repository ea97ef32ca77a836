// The first page of a database: which format it has, how its texts are coded, and what guards it.
//
// Most of it lies under a mask, the first bytes of an RC4 stream with one key for all databases.
#pragma once

#include "providers/access/SJetFormat.h"

#include <array>
#include <cstdint>
#include <span>
#include <string>

namespace NSTQ::Providers {

class CHeaderPage {
public:
    /// So many bytes of the page are looked at.
    static constexpr std::size_t size = 0x18 + 128;

    /// `bytes` is the beginning of the file. Throws CSourceError when it is no database of a known version.
    explicit CHeaderPage(std::span<const unsigned char, size> bytes);

    /// Jet 3 and 4, whose password is kept in the header, as opposed to ACE, whose password is what decrypts.
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
