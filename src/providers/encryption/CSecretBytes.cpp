#include "providers/encryption/CSecretBytes.h"

#include "platform/automation/WipeMemory.h"

#include <algorithm>

namespace NSTQ::Providers {

void Wipe(std::span<unsigned char> bytes) {
    Platform::WipeMemory(bytes.data(), bytes.size());
}

CSecretBytes CSecretBytes::Resized(std::size_t size, unsigned char fill) const {
    CSecretBytes result(size, fill);
    std::ranges::copy(Bytes().first(std::min(size, m_size)), result.Bytes().begin());
    return result;
}

} // namespace NSTQ::Providers
