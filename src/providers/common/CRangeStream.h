// A part of a file, its bytes one after another.
#pragma once

#include "providers/common/ByteSources.h"

#include <memory>

namespace NSTQ::Providers {

class CRangeStream : public IByteStream {
public:
    /// The `size` bytes of `source` from `position` on. Nothing is read yet: Read throws if `source` is shorter.
    CRangeStream(std::shared_ptr<IRandomAccess> source, std::uint64_t position, std::uint64_t size)
        : m_source(std::move(source)), m_position(position), m_left(size) {}

    std::size_t Read(std::span<unsigned char> target) override;

private:
    std::shared_ptr<IRandomAccess> m_source;
    std::uint64_t m_position;
    std::uint64_t m_left;
};

} // namespace NSTQ::Providers
