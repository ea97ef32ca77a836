// Where bytes come from: anywhere in a file, a decrypted stream or memory, or one after another.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace NSTQ::Providers {

class IRandomAccess {
public:
    virtual ~IRandomAccess() = default;
    /// Size in bytes; it does not change.
    virtual std::uint64_t Size() const = 0;
    /// Fills `target` with the bytes from `offset` on. Throws CSourceError when not all of them can be read.
    virtual void ReadAt(std::uint64_t offset, std::span<unsigned char> target) = 0;
};

class IByteStream {
public:
    virtual ~IByteStream() = default;
    /// Puts bytes into `target` (which is not empty) and returns how many; 0 only at the end. Throws CSourceError.
    virtual std::size_t Read(std::span<unsigned char> target) = 0;
};

} // namespace NSTQ::Providers
