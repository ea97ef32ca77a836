// Where bytes go: standard output, a descriptor, device or pipe that is there, or a file that is replaced when all is
// written.
#pragma once

#include "CTemporaryFile.h"

#include <memory>
#include <string>

namespace NSTQ::Tool {

class COutputTarget {
public:
    /// Opens the target; an empty name, "-" and "/dev/stdout" are standard output. Throws CFailure.
    explicit COutputTarget(const std::string& name);
    /// Removes what was not put into its place.
    ~COutputTarget();
    COutputTarget(const COutputTarget&) = delete;
    COutputTarget& operator=(const COutputTarget&) = delete;

    static bool IsStandardOutputName(const std::string& name);
    /// The path behind a chain of links, which may end at a file that does not exist yet. Throws CFailure.
    static std::string FollowLinks(std::string path);

    bool IsStandardOutput() const { return m_name.empty(); }
    int Descriptor() const { return m_descriptor; }
    /// The descriptor as a path, which neither a code page nor a length can spoil.
    std::string DescriptorPath() const;
    /// For messages.
    std::string Describe() const;

    /// Writes all bytes past any buffer. False when nobody reads the pipe any more. Throws CFailure.
    bool Write(const char* bytes, std::size_t size);
    /// Puts a file into its place; what is written later is then seen at once. Throws CFailure.
    void Replace();

private:
    void OpenDevice(const std::string& path);

    std::string m_name; ///< empty for standard output
    std::unique_ptr<CTemporaryFile> m_temporary;
    int m_descriptor = -1;
    bool m_isOwned = false; ///< the descriptor is to be closed here
};

} // namespace NSTQ::Tool
