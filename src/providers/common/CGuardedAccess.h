// Random access for several threads: one reads at a time.
#pragma once

#include "providers/common/ByteSources.h"

#include <memory>
#include <mutex>
#include <utility>

namespace NSTQ::Providers {

class CGuardedAccess : public IRandomAccess {
public:
    /// Nobody else uses `inner` from now on.
    explicit CGuardedAccess(std::shared_ptr<IRandomAccess> inner) : m_inner(std::move(inner)) {}

    std::uint64_t Size() const override { return m_inner->Size(); }
    void ReadAt(std::uint64_t offset, std::span<unsigned char> target) override {
        const std::lock_guard lock(m_mutex);
        m_inner->ReadAt(offset, target);
    }

private:
    std::shared_ptr<IRandomAccess> m_inner;
    std::mutex m_mutex;
};

} // namespace NSTQ::Providers
