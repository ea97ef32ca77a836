// A stream that a thread of its own reads ahead (see CBuffersAhead), so that decompressing one part of a file and
// parsing another happen at the same time. From the first Read on only the thread uses the inner stream.
#pragma once

#include "providers/common/ByteSources.h"
#include "providers/common/CBuffersAhead.h"

#include <memory>
#include <vector>

namespace NSTQ::Providers {

class CReadAheadStream : public IByteStream {
public:
    /// What is read ahead takes this memory.
    static constexpr std::size_t bufferSize = 1U << 16;
    static constexpr std::size_t bufferCount = 16;

    explicit CReadAheadStream(std::unique_ptr<IByteStream> stream);

    /// The bytes of the inner stream. What that throws is thrown after the bytes before it, and again by further
    /// calls.
    std::size_t Read(std::span<unsigned char> target) override;

private:
    struct SBuffer {
        std::vector<unsigned char> bytes;
        std::size_t size = 0;
    };

    bool Fill(SBuffer& buffer);

    std::unique_ptr<IByteStream> m_stream;
    std::size_t m_at = 0;                          ///< in the buffer that is being taken
    CBuffersAhead<SBuffer, bufferCount> m_buffers; ///< the last member: its thread uses the others
};

} // namespace NSTQ::Providers
