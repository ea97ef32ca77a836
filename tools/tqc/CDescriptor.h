// A descriptor that is closed with the object.
#pragma once

namespace NSTQ::Tool {

class CDescriptor {
public:
    /// Negative for none.
    explicit CDescriptor(int descriptor = -1) : m_iDescriptor(descriptor) {}
    CDescriptor(const CDescriptor&) = delete;
    CDescriptor& operator=(const CDescriptor&) = delete;
    ~CDescriptor() { Reset(-1); }

    int Get() const { return m_iDescriptor; }
    /// Closes the one in hand and takes another.
    void Reset(int descriptor);

private:
    int m_iDescriptor;
};

} // namespace NSTQ::Tool
