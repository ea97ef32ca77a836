// The beginning of a file, by which its type is detected, and its attributes.
#pragma once

#include "CDescriptor.h"
#include "tqcAccess/Types.h"

#include <sys/stat.h>

#include <ctime>
#include <string>
#include <string_view>

namespace NSTQ::Tool {

class CFileHead {
public:
    CFileHead() = default;
    /// Reads from the current position of the descriptor. `name` is the file name in messages. Throws CFailure, also
    /// for a folder.
    CFileHead(int descriptor, const std::string& name);

    /// Opens a file for it, without waiting for anything. Throws CFailure.
    static CDescriptor Open(const std::string& path, const std::string& name);

    /// As many bytes as a reader reads at a time, or the whole file.
    std::string_view Bytes() const { return m_bytes; }
    bool IsWholeFile() const { return m_isWholeFile; }
    LONGLONG Size() const { return m_status.st_size; }
    std::time_t UpdateTime() const { return m_status.st_mtime; }
    /// Whether the descriptor refers to the same file.
    bool IsFileOf(int descriptor) const;

private:
    std::string m_bytes;
    bool m_isWholeFile = false;
    struct stat m_status {};
};

} // namespace NSTQ::Tool
