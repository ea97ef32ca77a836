// A stream that consists of pieces of another one.
#pragma once

#include "providers/common/ByteSources.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace NSTQ::Providers {

/// Consecutive bytes of the underlying stream.
struct SExtent {
    std::uint64_t offset; ///< in the underlying stream
    std::uint64_t size;
};

class CExtentAccess : public IRandomAccess {
public:
    /// The extents one after another, each of at least one byte. Throws CSourceError when one of them ends beyond
    /// `input`.
    CExtentAccess(std::shared_ptr<IRandomAccess> input, const std::vector<SExtent>& extents);

    std::uint64_t Size() const override { return m_size; }
    /// One read of the underlying stream for each extent.
    void ReadAt(std::uint64_t offset, std::span<unsigned char> target) override;

private:
    struct SPiece {
        std::uint64_t begin;  ///< in this stream; the next piece begins where it ends
        std::uint64_t offset; ///< in the underlying stream
    };

    std::shared_ptr<IRandomAccess> m_input;
    std::vector<SPiece> m_pieces;
    std::uint64_t m_size = 0;
};

} // namespace NSTQ::Providers
