// The stream cipher RC4. Implemented here because systems rightly no longer offer it: it is not secure, but old files
// still have to be read.
#pragma once

#include <array>
#include <cstddef>
#include <span>

namespace NSTQ::Providers {

class CRc4 {
public:
    /// A key of 1 to 256 bytes.
    explicit CRc4(std::span<const unsigned char> key);

    /// Decrypts (or encrypts) in place, continuing after the previous call.
    void Apply(std::span<unsigned char> bytes);
    /// Continues as if `count` bytes had been decrypted.
    void Skip(std::size_t count);

private:
    unsigned char Next();

    std::array<unsigned char, 256> m_state;
    unsigned char m_first = 0;
    unsigned char m_second = 0;
};

} // namespace NSTQ::Providers
