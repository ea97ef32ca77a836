// What makes the pages of an encoded or encrypted database readable. The header page is never encoded.
#pragma once

#include <cstdint>
#include <span>

namespace NSTQ::Providers {

class IPageDecoder {
public:
    virtual ~IPageDecoder() = default;
    /// Decodes the bytes of the whole page `page` in place. May be called from one thread at a time.
    virtual void Decode(std::uint32_t page, std::span<unsigned char> bytes) = 0;
};

} // namespace NSTQ::Providers
