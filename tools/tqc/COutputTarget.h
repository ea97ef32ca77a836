// The target of an output: standard output, an open file, device or pipe, or a file that is replaced after everything
// has been written.
#pragma once

#include "COpenFile.h"
#include "CTemporaryFile.h"

#include <memory>
#include <string>

namespace NSTQ::Tool {

class COutputTarget {
public:
    enum class EUse {
        Open,  ///< it is written as an open file
        ByPath ///< what writes it opens it again, by FilePath, so that it must be a file
    };

    /// Opens the target; an empty name, "-" and "/dev/stdout" are standard output. Throws CFailure.
    explicit COutputTarget(const std::string& name, EUse use = EUse::Open);

    static bool IsStandardOutputName(const std::string& name);
    /// The path at the end of a chain of links, which may end at a file that does not exist yet. Throws CFailure.
    static std::string FollowLinks(std::string path);

    bool IsStandardOutput() const { return m_name.empty(); }
    /// The open file as a path of the library, which no code page changes and which is never too long.
    std::string OpenPath() const;
    /// The path of the file that replaces the target, if it is used by path.
    const std::string& FilePath() const { return m_temporary->Path(); }
    /// For messages.
    std::string Describe() const;

    /// Writes all bytes without buffering. False when the reader has closed the pipe. Throws CFailure.
    bool Write(const char* bytes, std::size_t size);
    /// Replaces the target by the file; later writes are then visible immediately. Throws CFailure.
    void Replace();

private:
    Port::TFile File() const { return m_temporary ? m_temporary->File() : m_opened.Get(); }
    void Open(const std::string& path, EUse use);
    void CheckUse(EUse use) const;
    void Check(DWORD code) const;

    std::string m_name;                          ///< empty for standard output
    std::unique_ptr<CTemporaryFile> m_temporary; ///< removed at the end unless it has replaced the target
    COpenFile m_opened;                          ///< anything else
};

} // namespace NSTQ::Tool
