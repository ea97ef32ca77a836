// Decrypts the bytes of an entry of a zip archive in their order.
#pragma once

#include <span>

namespace NSTQ::Providers {

class IEntryCipher {
public:
    virtual ~IEntryCipher() = default;
    /// Decrypts in place the bytes that follow those of the previous call.
    virtual void Decrypt(std::span<unsigned char> bytes) = 0;
};

} // namespace NSTQ::Providers
