// Faults in place of calls of the system and allocations, so that error paths run in tests.
//
// A test program links one of two libraries (tests/support.cmake). `tqc_port_faults` wraps calls of the port
// (platform/Port.h), which both systems have: Open, Read, Write, Seek and MakeFolder. `tqc_system_faults` wraps the
// system calls of the library and of the test; only it has short transfers of Write. Both have Allocate. Faults
// affect the thread that made them. One per kind of call is active; a second one replaces it until it ends.
#pragma once

#include <cstddef>

namespace NSTQ::Tests::Faults {

/// Kinds of calls. Allocate is every form of operator new but those for over-aligned types; it has no error number.
enum class Call {
    Open,
    Close,
    Read,
    Write,
    Seek,
    Stat,
    Truncate,
    Lock,
    Duplicate,
    Unlink,
    RemoveFolder,
    MakeFolder,
    OpenFolder,
    ReadFolder,
    Allocate
};

inline constexpr std::size_t callCount = static_cast<std::size_t>(Call::Allocate) + 1;

/// Which calls fail: the one, or that one and all after it.
enum class Times { Once, Always };

/// Makes Read and Write transfer at most this many bytes (at least 1) instead of failing.
struct Short {
    std::size_t bytes;
};

/// One fault, active as long as the object exists.
class Scope {
public:
    /// The `nth` call (from 1) fails with `error`. A close that fails has closed nevertheless, as on Linux.
    Scope(Call call, std::size_t nth, int error, Times times = Times::Once);
    Scope(Call call, std::size_t nth, Short limit, Times times = Times::Once);
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
    ~Scope();

    /// How many calls of the kind there were, including the failed ones.
    std::size_t Calls() const { return m_calls; }
    /// True when the fault has occurred.
    bool Fired() const { return m_calls >= m_nth; }

    /// For FindStriking.
    bool Strike();
    int Error() const { return m_error; }
    /// The bytes that an affected call may transfer; 0 when it is to fail.
    std::size_t Limit() const { return m_limit; }

private:
    Call m_call;
    std::size_t m_nth;
    std::size_t m_limit;
    int m_error;
    Times m_times;
    std::size_t m_calls = 0;
    Scope* m_previous;
};

/// The `nth` allocation (from 1) fails, whichever thread makes it, as long as the object exists; one at a time.
class AllocationOfAnyThread {
public:
    explicit AllocationOfAnyThread(std::ptrdiff_t nth);
    AllocationOfAnyThread(const AllocationOfAnyThread&) = delete;
    AllocationOfAnyThread& operator=(const AllocationOfAnyThread&) = delete;
    ~AllocationOfAnyThread();
    bool Fired() const;
};

/// For the wrappers: counts one call and returns the fault that affects it, or null.
Scope* FindStriking(Call call);

/// Every read (write) transfers at most `bytes` bytes.
[[nodiscard]] inline Scope Reads(std::size_t bytes) {
    return {Call::Read, 1, Short{bytes}, Times::Always};
}
[[nodiscard]] inline Scope Writes(std::size_t bytes) {
    return {Call::Write, 1, Short{bytes}, Times::Always};
}

/// Calls `run(n)` with the n-th call failing or being short, for n = 1, 2, ... until a run makes fewer than n calls.
/// Returns in how many runs a fault occurred. With Call::Allocate `run` must catch std::bad_alloc and assert
/// afterwards.
template <class TFault, class TRun>
std::size_t ForEachFailure(Call call, TFault what, TRun run) {
    for (std::size_t n = 1;; ++n) {
        const Scope fault(call, n, what);
        run(n);
        if (!fault.Fired())
            return n - 1;
    }
}

/// Blocks from operator new, of all threads, that are not deleted yet: equal before and after what must not leak.
std::ptrdiff_t LiveAllocations();

/// Descriptors that are open in this process (of the first 1024).
std::size_t OpenDescriptors();

} // namespace NSTQ::Tests::Faults
