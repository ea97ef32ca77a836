// What makes the pages of an encoded or encrypted database readable. The header page is never encoded.
#pragma once

#include "providers/access/CHeaderPage.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace NSTQ::Providers {

class IPageDecoder {
public:
    virtual ~IPageDecoder() = default;
    /// Decodes the bytes of the whole page `page` in place. Throws CSourceError.
    virtual void Decode(std::uint32_t page, std::span<unsigned char> bytes) = 0;
};

/// Makes the decoder that a database needs whose header has a key; `page` is the whole header page, `passWord` in the
/// ANSI code page. Throws CSourceError for an encryption that is not known or that this build has left out, and
/// CPassWordRefused with DB_SEC_E_AUTH_FAILED when the password is missing or wrong.
std::unique_ptr<IPageDecoder> MakePageDecoder(const CHeaderPage& header, std::span<const unsigned char> page,
                                              const std::string& passWord);

} // namespace NSTQ::Providers
