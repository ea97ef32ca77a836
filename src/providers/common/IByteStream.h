// Bytes that come one after another.
#pragma once

#include <cstddef>
#include <span>

namespace NSTQ::Providers {

class IByteStream {
public:
    virtual ~IByteStream() = default;
    /// Puts bytes into `target` (which is not empty) and returns how many; 0 only at the end. Throws CSourceError.
    virtual std::size_t Read(std::span<unsigned char> target) = 0;
};

} // namespace NSTQ::Providers
