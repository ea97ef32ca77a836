#include "providers/encryption/CSecretBytes.h"

#include <algorithm>
#include <openssl/crypto.h>

namespace NSTQ::Providers {

void Wipe(std::span<unsigned char> bytes) {
    OPENSSL_cleanse(bytes.data(), bytes.size());
}

CSecretBytes CSecretBytes::Resized(std::size_t size, unsigned char fill) const {
    CSecretBytes result(size, fill);
    std::ranges::copy(Bytes().first(std::min(size, m_size)), result.Bytes().begin());
    return result;
}

} // namespace NSTQ::Providers
