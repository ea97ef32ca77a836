// Bytes that can be read anywhere: a file, a decrypted stream, memory.
#pragma once

#include <cstdint>
#include <span>

namespace NSTQ::Providers {

class IRandomAccess {
public:
    virtual ~IRandomAccess() = default;
    /// Size in bytes; stays the same as long as the object lives.
    virtual std::uint64_t Size() const = 0;
    /// Fills `target` with the bytes from `offset` on. Throws CSourceError when not all of them can be had.
    virtual void ReadAt(std::uint64_t offset, std::span<unsigned char> target) = 0;
};

} // namespace NSTQ::Providers
