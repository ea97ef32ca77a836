// Faults put in place of system calls and allocations, so that error paths run in tests.
//
// A test program gets them by linking `tqc_fault_injection` (tests/support.cmake): the linker leads the calls of the
// library and of the test to wrappers, whatever their name variant (open64, __read_chk …); without a fault in force
// these only pass them on. Faults act on the thread that made them and count its calls from then on. One fault per
// kind of call is in force; a second one of the same kind takes its place until it ends.
//
//     {
//         Faults::Scope fault{Faults::Call::Read, 3, EIO};            // the third read fails
//         EXPECT_FALSE(reader.Read());
//     }
//     const auto slow = Faults::Reads(1);                              // every read delivers one byte
//     const auto calls = Faults::ForEachFailure(Faults::Call::Read, EIO, [&] { … });
#pragma once

#include <cstddef>

namespace NSTQ::Tests::Faults {

/// Kinds of calls. Seek is lseek, Stat is stat, lstat, fstat and fstatat, Lock is flock, Allocate is every form of
/// operator new but those for over-aligned types (which throws std::bad_alloc, the nothrow forms return null, and the
/// error number is not used).
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

/// A fault's reach: the one call, or that call and all after it.
enum class Times { Once, Always };

/// Makes Read and Write transfer at most this many bytes (at least 1) instead of failing.
struct Short {
    std::size_t bytes;
};

/// Keeps one fault in force for as long as it lives.
class Scope {
public:
    /// The `nth` call (from 1) fails with `error`. A close that fails has closed nevertheless, as on Linux.
    Scope(Call call, std::size_t nth, int error, Times times = Times::Once);
    Scope(Call call, std::size_t nth, Short limit, Times times = Times::Once);
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;
    ~Scope();

    /// How many calls of the kind there were, the failed ones among them.
    std::size_t Calls() const { return m_uCalls; }
    /// True when the fault has struck.
    bool Fired() const { return m_uCalls >= m_uNth; }

    /// For the wrappers: counts one call and tells whether the fault strikes it.
    bool Strike();
    int Error() const { return m_iError; }
    /// The bytes that a struck call may transfer; 0 when it is to fail.
    std::size_t Limit() const { return m_uLimit; }

private:
    Call m_eCall;
    std::size_t m_uNth;
    std::size_t m_uLimit;
    int m_iError;
    Times m_eTimes;
    std::size_t m_uCalls = 0;
    Scope* m_pPrevious;
};

/// Every read (write) transfers at most `bytes` bytes.
[[nodiscard]] inline Scope Reads(std::size_t bytes) {
    return {Call::Read, 1, Short{bytes}, Times::Always};
}
[[nodiscard]] inline Scope Writes(std::size_t bytes) {
    return {Call::Write, 1, Short{bytes}, Times::Always};
}

/// Runs `run(n)` with the n-th call failing with an error number or coming short (Short), for n = 1, 2, … until a run
/// makes fewer than n calls. Returns how many runs met a fault. With Call::Allocate `run` must catch std::bad_alloc
/// and keep test assertions, which allocate, behind the code under test.
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
