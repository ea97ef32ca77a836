#include "SCJobs.h"

#include "SCSignals.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <system_error>
#include <thread>
#include <vector>

namespace NSTQ::Tool {
namespace {

/// What the threads share.
class CTasks {
public:
    CTasks(std::size_t count, const std::function<void(std::size_t)>& task) : m_count(count), m_task(task) {}

    /// Does tasks until there are no more.
    void Work() noexcept {
        for (std::size_t i = m_next++; i < m_count; i = m_next++) {
            try {
                m_task(i);
            } catch (...) {
                m_next = m_count;
                if (!m_hasFailed.exchange(true))
                    m_failure = std::current_exception();
            }
        }
    }

    /// After all threads have ended.
    void Rethrow() const {
        if (m_failure)
            std::rethrow_exception(m_failure);
    }

private:
    std::size_t m_count;
    const std::function<void(std::size_t)>& m_task;
    std::atomic<std::size_t> m_next{0};
    std::atomic<bool> m_hasFailed{false};
    std::exception_ptr m_failure;
};

/// Joined at the end.
class CThreads {
public:
    CThreads() = default;
    CThreads(const CThreads&) = delete;
    CThreads& operator=(const CThreads&) = delete;
    ~CThreads() {
        for (std::thread& thread : m_threads)
            thread.join();
    }

    /// False when the system gives no thread.
    bool Start(CTasks& tasks) {
        m_threads.reserve(m_threads.size() + 1);
        try {
            const SCSignals::CHeld held;
            m_threads.emplace_back(&CTasks::Work, &tasks);
            return true;
        } catch (const std::system_error&) {
            return false;
        }
    }

private:
    std::vector<std::thread> m_threads;
};

} // namespace

void SCJobs::Run(std::size_t count, unsigned jobs, const std::function<void(std::size_t)>& task) {
    CTasks tasks(count, task);
    const std::size_t wanted = std::min<std::size_t>(jobs, count);
    {
        CThreads threads;
        std::size_t started = 0;
        while (wanted > 1 && started < wanted && threads.Start(tasks))
            ++started;
        if (started == 0)
            tasks.Work();
    }
    tasks.Rethrow();
}

} // namespace NSTQ::Tool
