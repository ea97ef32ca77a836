// The target of an output: standard output, an existing descriptor, device or pipe, or a file that is replaced after
// everything has been written.
#pragma once

#include "CTemporaryFile.h"

#include <memory>
#include <string>

namespace NSTQ::Tool {

class COutputTarget {
public:
    /// Opens the target; an empty name, "-" and "/dev/stdout" are standard output. Throws CFailure.
    explicit COutputTarget(const std::string& name);
    /// Removes a file that has not replaced the target.
    ~COutputTarget();
    COutputTarget(const COutputTarget&) = delete;
    COutputTarget& operator=(const COutputTarget&) = delete;

    static bool IsStandardOutputName(const std::string& name);
    /// The path at the end of a chain of links, which may end at a file that does not exist yet. Throws CFailure.
    static std::string FollowLinks(std::string path);

    bool IsStandardOutput() const { return m_name.empty(); }
    int Descriptor() const { return m_descriptor; }
    /// The descriptor as a path, which no code page changes and which is never too long.
    std::string DescriptorPath() const;
    /// For messages.
    std::string Describe() const;

    /// Writes all bytes without buffering. False when the reader has closed the pipe. Throws CFailure.
    bool Write(const char* bytes, std::size_t size);
    /// Replaces the target by the file; later writes are then visible immediately. Throws CFailure.
    void Replace();

private:
    void OpenDevice(const std::string& path);

    std::string m_name; ///< empty for standard output
    std::unique_ptr<CTemporaryFile> m_temporary;
    int m_descriptor = -1;
    bool m_isOwned = false; ///< the descriptor is to be closed here
};

} // namespace NSTQ::Tool
