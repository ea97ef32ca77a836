// A file that takes another one's place when it is complete, and is gone when it never becomes so.
//
// It stands beside its target, so that the change of name is one step: whoever looks sees the old file or the new
// one. An interrupting signal removes it as well; there is one such file at a time.
#pragma once

#include <string>

namespace NSTQ::Tool {

class CTemporaryFile {
public:
    /// Creates the file, with the target's owner and mode when there is a target. Throws CFailure.
    explicit CTemporaryFile(const std::string& target);
    ~CTemporaryFile();
    CTemporaryFile(const CTemporaryFile&) = delete;
    CTemporaryFile& operator=(const CTemporaryFile&) = delete;

    int Descriptor() const { return m_iDescriptor; }

    /// Has the data stored and gives the file the target's name. Throws CFailure; the target is then as it was.
    void Replace();

private:
    void Create();
    void TakeOverTarget();

    std::string m_strTarget;
    std::string m_strPath; ///< empty once the file has the target's name
    int m_iDescriptor = -1;
};

} // namespace NSTQ::Tool
