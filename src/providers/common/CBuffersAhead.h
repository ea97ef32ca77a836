// Buffers that a thread of its own fills ahead of the reader, so that two steps of reading happen at the same time.
//
// The thread runs from the first Get until it has filled the last buffer. It takes no signals, and it has ended when
// the destructor returns, wherever the reader has stopped. What filling shares with others must be guarded; see
// CGuardedAccess. If the system refuses the thread, the reader's own thread fills the buffers.
#pragma once

#include "platform/Port.h"

#include <array>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace NSTQ::Providers {

template <class TBuffer, std::size_t bufferCount>
class CBuffersAhead {
public:
    /// `fill` replaces the content of a buffer; it returns false for the last one, which may be empty. When it
    /// throws, the buffer with what it has received is the last one.
    explicit CBuffersAhead(std::function<bool(TBuffer&)> fill) : m_fill(std::move(fill)) {}
    CBuffersAhead(const CBuffersAhead&) = delete;
    CBuffersAhead& operator=(const CBuffersAhead&) = delete;
    /// Waits until the thread has filled the buffer that it is at.
    ~CBuffersAhead() {
        if (!m_thread.joinable())
            return;
        {
            const std::lock_guard lock(m_mutex);
            m_isStopping = true;
        }
        m_change.notify_one();
        m_thread.join();
    }

    /// The first buffer that has not been released; it belongs to the reader until then. Null when all have been.
    /// What `fill` has thrown, whatever that is, is thrown when all have been, each time.
    TBuffer* Get() {
        if (m_ready == 0 && !m_isOver)
            Wait();
        if (m_isOver && m_fault)
            std::rethrow_exception(m_fault);
        return m_isOver ? nullptr : &m_slots[m_taken % bufferCount].buffer;
    }

    /// Gives the buffer back. The thread waits only when all are filled, so it is woken at one number of free ones.
    void Release() {
        const SSlot& slot = m_slots[m_taken % bufferCount];
        --m_ready;
        if (slot.isLast) {
            m_isOver = true;
            m_fault = slot.fault;
            return;
        }
        bool isWaiting = false;
        {
            const std::lock_guard lock(m_mutex);
            ++m_taken;
            isWaiting = m_filled - m_taken == bufferCount - batch;
        }
        if (isWaiting)
            m_change.notify_one();
    }

private:
    struct SSlot {
        TBuffer buffer;
        bool isLast = false;
        std::exception_ptr fault;
    };

    /// Waking the other side takes longer than filling a buffer: whoever has to wait goes on when there are several.
    static constexpr std::size_t batch = bufferCount / 2;

    void Wait() {
        if (!m_isStarted)
            Start();
        if (!m_thread.joinable())
            FillNext();
        std::unique_lock lock(m_mutex);
        if (m_filled == m_taken)
            m_change.wait(lock, [this] { return m_isEnded || m_filled - m_taken >= batch; });
        m_ready = m_filled - m_taken;
    }

    void Start() {
        m_isStarted = true;
        try {
            m_thread = Platform::Port::StartThread([this] {
                while (WaitForRoom() && FillNext()) {
                }
            });
        } catch (const std::system_error&) {
            // The system has no thread to give.
        }
    }

    /// False when nobody wants more.
    bool WaitForRoom() {
        std::unique_lock lock(m_mutex);
        if (m_filled - m_taken == bufferCount)
            m_change.wait(lock, [this] { return m_isStopping || m_filled - m_taken <= bufferCount - batch; });
        return !m_isStopping;
    }

    /// False after the last buffer. Only this changes m_filled.
    bool FillNext() {
        SSlot& slot = m_slots[m_filled % bufferCount];
        try {
            slot.isLast = !m_fill(slot.buffer);
        } catch (...) {
            slot.fault = std::current_exception();
            slot.isLast = true;
        }
        bool isWaiting = false;
        {
            const std::lock_guard lock(m_mutex);
            ++m_filled;
            m_isEnded = slot.isLast;
            isWaiting = m_isEnded || m_filled - m_taken == batch;
        }
        if (isWaiting)
            m_change.notify_one();
        return !slot.isLast;
    }

    std::function<bool(TBuffer&)> m_fill;
    bool m_isStarted = false;
    std::size_t m_ready = 0; ///< buffers that are known to be filled
    bool m_isOver = false;
    std::exception_ptr m_fault;
    std::thread m_thread;
    std::mutex m_mutex; ///< of the next four
    std::condition_variable m_change;
    std::size_t m_filled = 0; ///< buffers in all; those from m_taken on are the reader's, the others the thread's
    std::size_t m_taken = 0;
    bool m_isEnded = false; ///< the last buffer is filled
    bool m_isStopping = false;
    std::array<SSlot, bufferCount> m_slots;
};

} // namespace NSTQ::Providers
