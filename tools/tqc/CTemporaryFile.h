// A file that takes another one's place when it is complete, and is gone when it never becomes so.
//
// Whoever looks sees the old file or the new one. Where the file system has files without a name, nothing can be left
// behind, whatever ends the program; the file gets its name when it is complete. Elsewhere it stands under a hidden
// name beside its target (".TARGET.tqc-" and eight letters), and an interrupting signal removes it; so it does for
// the two system calls that it takes to put a nameless file in place of one that is there.
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

    int Descriptor() const { return m_descriptor; }

    /// Has the data stored and gives the file the target's name. What is written later is then seen at once, and a
    /// second call only has it stored. Throws CFailure; the target is then as it was.
    void Replace();

private:
    bool CreateNameless();
    void CreateNamed();
    void TakeOverTarget();
    bool TryNames(bool (CTemporaryFile::*create)());
    bool CreateAtPath();
    bool LinkToPath();
    void Forget();
    [[noreturn]] void Fail(int error, const char* hint = "") const;

    std::string m_target;
    std::string m_path; ///< the hidden name; empty while there is none
    int m_descriptor = -1;
    bool m_isPlaced = false;
    unsigned m_mode = 0; ///< that the file gets with its place; only the owner may read it before
};

} // namespace NSTQ::Tool
