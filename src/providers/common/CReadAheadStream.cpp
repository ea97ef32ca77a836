#include "providers/common/CReadAheadStream.h"

#include <algorithm>

namespace NSTQ::Providers {

CReadAheadStream::CReadAheadStream(std::unique_ptr<IByteStream> stream)
    : m_stream(std::move(stream)), m_buffers([this](SBuffer& buffer) { return Fill(buffer); }) {}

std::size_t CReadAheadStream::Read(std::span<unsigned char> target) {
    while (const SBuffer* const buffer = m_buffers.Get()) {
        const std::size_t count = std::min(target.size(), buffer->size - m_at);
        std::copy_n(buffer->bytes.data() + m_at, count, target.data());
        m_at += count;
        if (m_at == buffer->size) {
            m_at = 0;
            m_buffers.Release();
        }
        if (count > 0)
            return count;
    }
    return 0;
}

bool CReadAheadStream::Fill(SBuffer& buffer) {
    buffer.size = 0;
    buffer.bytes.resize(bufferSize);
    while (buffer.size < bufferSize) {
        const std::size_t count = m_stream->Read(std::span(buffer.bytes).subspan(buffer.size));
        if (count == 0)
            return false;
        buffer.size += count;
    }
    return true;
}

} // namespace NSTQ::Providers
