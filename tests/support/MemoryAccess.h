// Bytes in memory as the file of a provider.
#pragma once

#include "providers/common/ByteSources.h"
#include "providers/common/CSourceError.h"

#include <algorithm>
#include <string>

namespace NSTQ::Tests {

class CMemoryAccess : public Providers::IRandomAccess {
public:
    explicit CMemoryAccess(std::string bytes) : m_strBytes(std::move(bytes)) {}
    std::uint64_t Size() const override { return m_strBytes.size(); }
    void ReadAt(std::uint64_t offset, std::span<unsigned char> target) override {
        if (offset > m_strBytes.size() || target.size() > m_strBytes.size() - offset)
            throw Providers::CSourceError("past the end");
        std::copy_n(m_strBytes.begin() + static_cast<std::ptrdiff_t>(offset), target.size(), target.begin());
    }

private:
    std::string m_strBytes;
};

} // namespace NSTQ::Tests
