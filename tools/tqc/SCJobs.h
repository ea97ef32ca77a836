// Tasks that threads do side by side.
#pragma once

#include <cstddef>
#include <functional>

namespace NSTQ::Tool {

class SCJobs {
public:
    /// Calls `task` with 0 to `count` - 1, in this order, in at most `jobs` threads at the same time, and waits for
    /// all. With one, in this thread; the threads that it starts get no interruptions. After a task has thrown no
    /// other is begun; the first exception is thrown at the end. When the system gives fewer threads, those do all.
    static void Run(std::size_t count, unsigned jobs, const std::function<void(std::size_t)>& task);
};

} // namespace NSTQ::Tool
