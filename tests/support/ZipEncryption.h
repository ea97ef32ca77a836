// Encrypts the contents of zip entries, with constant salts, so that the same input gives the same archive.
#pragma once

#include "support/ZipWriter.h"

namespace NSTQ::Tests {

enum class EZipEncryption { None, Traditional, Aes128, Aes192, Aes256 };

/// Returns the entry with its packed bytes encrypted. `isSecondVersion`: AES entries have no checksum (AE-2).
SZipEntryText Encrypted(SZipEntryText entry, EZipEncryption encryption, bool isSecondVersion,
                        std::string_view passWord);

} // namespace NSTQ::Tests
