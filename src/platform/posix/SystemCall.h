// Calls of the operating system that a signal may interrupt.
#pragma once

#include <cerrno>

namespace NSTQ::Platform::Port {

/// Repeats `call` (which returns -1 and sets errno on failure) as long as a signal interrupts it.
template <class TCall>
auto RetryInterrupted(TCall call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

} // namespace NSTQ::Platform::Port
