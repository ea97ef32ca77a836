// A descriptor that is closed with the object.
#pragma once

#include <cstddef>
#include <sys/types.h>

namespace NSTQ::Tool {

class CDescriptor {
public:
    /// Negative for none.
    explicit CDescriptor(int descriptor = -1) : m_descriptor(descriptor) {}
    CDescriptor(const CDescriptor&) = delete;
    CDescriptor& operator=(const CDescriptor&) = delete;
    ~CDescriptor() { Reset(-1); }

    /// Reads what the system has available, at least one byte; 0 at the end, negative on an error. Waits for an empty
    /// pipe, also a non-blocking one, which standard input may be.
    static ssize_t Read(int descriptor, char* bytes, std::size_t size);

    int Get() const { return m_descriptor; }
    /// Closes the current one and takes another.
    void Reset(int descriptor);

private:
    int m_descriptor;
};

} // namespace NSTQ::Tool
