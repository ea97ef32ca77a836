// Encrypts the pages of an accdb that is being built, and says in page 0 how. Made with libcrypto, apart from what
// the reader decrypts with.
#pragma once

#include <cstdint>
#include <string>

namespace NSTQ::Tests {

enum class EAccessCipher {
    Rc4, ///< of 2007
    AesSha1_128,
    AesSha512_256 ///< of 2010 and later
};

/// `key` is the one that the header holds. Page 0 stays readable.
void EncryptAccessPages(std::string& file, EAccessCipher cipher, const std::string& passWord, std::uint32_t key);

} // namespace NSTQ::Tests
