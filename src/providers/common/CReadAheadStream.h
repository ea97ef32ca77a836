// A stream that a thread of its own reads ahead, so that decompressing one part of a file and parsing another happen
// at the same time.
//
// The thread is the only one that uses the inner stream from the first Read until it has ended. It takes no signals,
// and it has ended when the destructor returns, wherever the reader has stopped. What the inner stream shares with
// others must be guarded; see CGuardedAccess.
#pragma once

#include "providers/common/ByteSources.h"

#include <array>
#include <condition_variable>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace NSTQ::Providers {

class CReadAheadStream : public IByteStream {
public:
    /// The memory of what is read ahead.
    static constexpr std::size_t bufferSize = 1U << 16;
    static constexpr std::size_t bufferCount = 16;

    explicit CReadAheadStream(std::unique_ptr<IByteStream> stream) : m_stream(std::move(stream)) {}
    CReadAheadStream(const CReadAheadStream&) = delete;
    CReadAheadStream& operator=(const CReadAheadStream&) = delete;
    /// Waits until the thread has filled the buffer that it is at.
    ~CReadAheadStream() override;

    /// The bytes of the inner stream. What it throws, whatever that is, is thrown after the bytes before it, and
    /// again by further calls. The first call starts the thread; if that is impossible, the stream is read without
    /// one.
    std::size_t Read(std::span<unsigned char> target) override;

private:
    struct SBuffer {
        std::vector<unsigned char> bytes;
        std::size_t size = 0;
        bool isLast = false;
        std::exception_ptr fault; ///< of the last one, after its bytes
    };

    void Start();
    void Run();
    void Fill(SBuffer& buffer);
    SBuffer& WaitForBytes();
    bool WaitForRoom();
    void Release();

    /// Waking the other side costs more than a buffer: whoever has to wait goes on when it has several.
    static constexpr std::size_t batch = bufferCount / 2;

    std::unique_ptr<IByteStream> m_stream;
    bool m_isStarted = false;
    std::size_t m_at = 0;    ///< in the buffer that is being taken
    std::size_t m_ready = 0; ///< buffers that are known to be filled
    std::thread m_thread;
    std::mutex m_mutex; ///< of the next four
    std::condition_variable m_change;
    std::size_t m_filled = 0; ///< buffers in all; those from m_taken on are the reader's, the others the thread's
    std::size_t m_taken = 0;
    bool m_isEnded = false; ///< the last buffer is filled
    bool m_isStopping = false;
    std::array<SBuffer, bufferCount> m_buffers;
};

} // namespace NSTQ::Providers
