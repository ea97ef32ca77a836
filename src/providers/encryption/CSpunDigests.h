// The results of hashing passwords many times. Preparing, listing and reading an encrypted source each open it, and
// nearly all the time of an open goes into the rounds of hashing. So the results are kept, and each password goes
// through the rounds once.
//
// The last results are kept in static memory for all threads. A result is wiped when another takes its place, by
// Clear, and when the library is unloaded. The password itself is not kept: the key is its digest before the first
// round, which includes the file's salt. The result follows from that digest alone, so no other password can get it.
// But whoever reads the memory of the process can test passwords against that digest without the rounds; descriptions
// therefore call Clear when they wipe their password.
#pragma once

#include "providers/encryption/CHash.h"

#include <array>
#include <atomic>
#include <optional>

namespace NSTQ::Providers {

class CSpunDigests {
public:
    constexpr CSpunDigests() = default;
    /// The one of the process.
    static CSpunDigests& Get();

    /// The result for the digest `first`, or nothing when it is not kept.
    std::optional<CSecretBytes> Find(EHash hash, std::uint32_t spinCount, const CSecretBytes& first);
    void Keep(EHash hash, std::uint32_t spinCount, const CSecretBytes& first, const CSecretBytes& last);
    void Clear();

private:
    struct SEntry {
        EHash hash = EHash::Md5;
        std::uint32_t spinCount = 0;
        CSecretBytes first{0};
        CSecretBytes last{0};
    };
    /// Enough for the password of a source and those tried before it.
    static constexpr std::size_t count = 4;

    /// A mutex that is initialised at compile time on every system, which std::mutex is not. It is held for as long
    /// as it takes to copy a few digests.
    class CLock {
    public:
        void lock() {
            while (m_isHeld.test_and_set(std::memory_order_acquire))
                m_isHeld.wait(true, std::memory_order_relaxed);
        }
        void unlock() {
            m_isHeld.clear(std::memory_order_release);
            m_isHeld.notify_one();
        }

    private:
        std::atomic_flag m_isHeld;
    };

    CLock m_lock;
    std::array<SEntry, count> m_entries; ///< free ones have empty digests
    std::size_t m_next = 0;
};

} // namespace NSTQ::Providers
