#include "providers/encryption/CAesCipher.h"

namespace NSTQ::Providers {

void CAesCipher::Apply(std::span<const unsigned char> start, std::span<unsigned char> bytes) {
    RequireCrypto(bytes.size() % blockSize == 0, "a part of a block");
    m_aes->Apply(start, bytes);
}

} // namespace NSTQ::Providers
