// Owns one file descriptor.
#pragma once

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace NSTQ::Platform {

class CDescriptor {
public:
    explicit CDescriptor(int descriptor = -1) : m_iDescriptor(descriptor) {}
    CDescriptor(const CDescriptor&) = delete;
    CDescriptor& operator=(const CDescriptor&) = delete;
    CDescriptor(CDescriptor&& other) noexcept : m_iDescriptor(other.Release()) {}
    CDescriptor& operator=(CDescriptor&& other) noexcept {
        std::swap(m_iDescriptor, other.m_iDescriptor);
        return *this;
    }
    /// Preserves errno, so that the caller still sees the error.
    ~CDescriptor() {
        const int error = errno;
        if (IsOpen())
            ::close(m_iDescriptor);
        errno = error;
    }

    bool IsOpen() const { return m_iDescriptor >= 0; }
    int Get() const { return m_iDescriptor; }

    /// Releases the descriptor; the caller closes it.
    int Release() {
        const int descriptor = m_iDescriptor;
        m_iDescriptor = -1;
        return descriptor;
    }

private:
    int m_iDescriptor;
};

} // namespace NSTQ::Platform
