#include "providers/encryption/CSpunDigests.h"

#include "platform/ado/Provider.h"

#include <algorithm>
#include <mutex>

namespace NSTQ::Providers {

namespace {

/// Not local to Get: the program's own static descriptions may call Clear while they are destroyed, and must find it.
constinit CSpunDigests digests;

} // namespace

CSpunDigests& CSpunDigests::Get() {
    return digests;
}

std::optional<CSecretBytes> CSpunDigests::Find(EHash hash, std::uint32_t spinCount, const CSecretBytes& first) {
    const std::scoped_lock lock(m_lock);
    for (const SEntry& entry : m_entries) {
        if (entry.hash == hash && entry.spinCount == spinCount &&
            std::ranges::equal(entry.first.Bytes(), first.Bytes()))
            return entry.last;
    }
    return std::nullopt;
}

void CSpunDigests::Keep(EHash hash, std::uint32_t spinCount, const CSecretBytes& first, const CSecretBytes& last) {
    const std::scoped_lock lock(m_lock);
    m_entries[m_next] = {hash, spinCount, first, last};
    m_next = (m_next + 1) % count;
}

void CSpunDigests::Clear() {
    const std::scoped_lock lock(m_lock);
    m_entries.fill({});
    m_next = 0;
}

} // namespace NSTQ::Providers

namespace NSTQ::Platform {

void ForgetPassWords() noexcept {
    Providers::CSpunDigests::Get().Clear();
}

} // namespace NSTQ::Platform
