// The beginning of a file, by which its type is detected, and its attributes.
#pragma once

#include "COpenFile.h"
#include "tqcAccess/Types.h"

#include <string>
#include <string_view>

namespace NSTQ::Tool {

class CFileHead {
public:
    CFileHead() = default;
    /// Reads from the current position of the file. `name` is the file name in messages. Throws CFailure, also for a
    /// folder.
    CFileHead(Port::TFile file, const std::string& name);

    /// Opens a file for it, without waiting for anything. Throws CFailure.
    static COpenFile Open(const std::string& path, const std::string& name);

    /// As many bytes as a reader reads at a time, or the whole file.
    std::string_view Bytes() const { return m_bytes; }
    bool IsWholeFile() const { return m_isWholeFile; }
    LONGLONG Size() const { return m_status.size; }
    const FILETIME& UpdateTime() const { return m_status.updateTime; }
    /// Whether the other one is the same regular file.
    bool IsFileOf(Port::TFile other) const;

private:
    std::string m_bytes;
    bool m_isWholeFile = false;
    Port::SStatus m_status;
};

} // namespace NSTQ::Tool
