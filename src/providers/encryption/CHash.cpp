#include "providers/encryption/CHash.h"

#include "providers/encryption/CSpunDigests.h"

namespace NSTQ::Providers {

CSecretBytes CHash::Of(std::initializer_list<TBytes> parts) {
    CSecretBytes digest(Size());
    Into(digest.Bytes(), parts);
    return digest;
}

void CHash::Into(std::span<unsigned char> target, std::initializer_list<TBytes> parts) {
    for (const TBytes part : parts)
        m_digest->Add(part);
    m_digest->End(target);
}

CSecretBytes CHash::Spin(TBytes salt, TBytes passWord, std::uint32_t spinCount) {
    const CSecretBytes first = Of({salt, passWord});
    if (const auto known = CSpunDigests::Get().Find(m_kind, spinCount, first))
        return *known;
    CSecretBytes digest = first;
    for (std::uint32_t round = 0; round < spinCount; ++round)
        Into(digest.Bytes(), {LittleEndian32(round), digest.Bytes()});
    CSpunDigests::Get().Keep(m_kind, spinCount, first, digest);
    return digest;
}

} // namespace NSTQ::Providers
