// File descriptors: one that is owned, and where their numbers may lie.
#pragma once

#include "platform/Port.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <utility>

namespace NSTQ::Platform::Port {

class CDescriptor {
public:
    explicit CDescriptor(int descriptor = -1) : m_descriptor(descriptor) {}
    CDescriptor(const CDescriptor&) = delete;
    CDescriptor& operator=(const CDescriptor&) = delete;
    CDescriptor(CDescriptor&& other) noexcept : m_descriptor(other.Release()) {}
    CDescriptor& operator=(CDescriptor&& other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    /// Preserves errno, so that the caller still sees the error.
    ~CDescriptor() {
        const int error = errno;
        if (IsOpen())
            ::close(m_descriptor);
        errno = error;
    }

    bool IsOpen() const { return m_descriptor >= 0; }
    int Get() const { return m_descriptor; }

    /// Releases the descriptor; the caller closes it.
    int Release() {
        const int descriptor = m_descriptor;
        m_descriptor = -1;
        return descriptor;
    }

private:
    int m_descriptor;
};

/// -1, which every system call rejects as a bad descriptor, if it is that of no file.
inline int DescriptorOf(TFile file) {
    return file < 0 || file > INT_MAX ? -1 : static_cast<int>(file);
}

/// Gives the copy a number above the standard streams.
inline int DuplicateAboveStandardStreams(int descriptor) {
    return ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

/// A host may run with its standard streams closed. A file with the descriptor of one would receive whatever is
/// printed, so it gets a descriptor above them.
inline int MoveAboveStandardStreams(int descriptor) {
    if (descriptor < 0 || descriptor > STDERR_FILENO)
        return descriptor;
    const CDescriptor low(descriptor);
    return DuplicateAboveStandardStreams(descriptor);
}

} // namespace NSTQ::Platform::Port
