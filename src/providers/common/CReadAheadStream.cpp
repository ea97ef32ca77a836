#include "providers/common/CReadAheadStream.h"

#include "platform/Port.h"

#include <algorithm>
#include <system_error>

namespace NSTQ::Providers {

CReadAheadStream::~CReadAheadStream() {
    if (!m_thread.joinable())
        return;
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
    }
    m_change.notify_one();
    m_thread.join();
}

std::size_t CReadAheadStream::Read(std::span<unsigned char> target) {
    if (!m_isStarted)
        Start();
    if (!m_thread.joinable())
        return m_stream->Read(target);
    SBuffer& buffer = WaitForBytes();
    const std::size_t count = std::min(target.size(), buffer.size - m_at);
    if (count == 0 && buffer.fault)
        std::rethrow_exception(buffer.fault);
    std::copy_n(buffer.bytes.data() + m_at, count, target.data());
    m_at += count;
    if (m_at == buffer.size && !buffer.isLast)
        Release();
    return count;
}

/// The thread waits only when all buffers are filled, so it is woken at one number of free ones.
void CReadAheadStream::Release() {
    m_at = 0;
    --m_ready;
    bool isWaiting = false;
    {
        const std::lock_guard lock(m_mutex);
        ++m_taken;
        isWaiting = m_filled - m_taken == bufferCount - batch;
    }
    if (isWaiting)
        m_change.notify_one();
}

void CReadAheadStream::Start() {
    m_isStarted = true;
    try {
        m_thread = Platform::Port::StartThread([this] { Run(); });
    } catch (const std::system_error&) {
        // The system has no thread to give.
    }
}

CReadAheadStream::SBuffer& CReadAheadStream::WaitForBytes() {
    if (m_ready == 0) {
        std::unique_lock lock(m_mutex);
        if (m_filled == m_taken)
            m_change.wait(lock, [this] { return m_isEnded || m_filled - m_taken >= batch; });
        m_ready = m_filled - m_taken;
    }
    return m_buffers[m_taken % bufferCount];
}

void CReadAheadStream::Run() {
    for (std::size_t next = 0; WaitForRoom(); ++next) {
        SBuffer& buffer = m_buffers[next % bufferCount];
        Fill(buffer);
        bool isWaiting = false;
        {
            const std::lock_guard lock(m_mutex);
            ++m_filled;
            m_isEnded = buffer.isLast;
            isWaiting = m_isEnded || m_filled - m_taken == batch;
        }
        if (isWaiting)
            m_change.notify_one();
        if (buffer.isLast)
            return;
    }
}

/// False when nobody wants more.
bool CReadAheadStream::WaitForRoom() {
    std::unique_lock lock(m_mutex);
    if (m_filled - m_taken == bufferCount)
        m_change.wait(lock, [this] { return m_isStopping || m_filled - m_taken <= bufferCount - batch; });
    return !m_isStopping;
}

void CReadAheadStream::Fill(SBuffer& buffer) {
    buffer.size = 0;
    try {
        buffer.bytes.resize(bufferSize);
        while (buffer.size < bufferSize && !buffer.isLast) {
            const std::size_t count = m_stream->Read(std::span(buffer.bytes).subspan(buffer.size));
            buffer.size += count;
            buffer.isLast = count == 0;
        }
    } catch (...) {
        buffer.fault = std::current_exception();
        buffer.isLast = true;
    }
}

} // namespace NSTQ::Providers
