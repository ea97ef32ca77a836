// One source of the command line: what is found out about it, and the reader over it.
#pragma once

#include "CSourceReader.h"
#include "SOptions.h"

#include <sys/stat.h>

#include <memory>
#include <string>

namespace NSTQ::Tool {

class CSource {
public:
    /// Looks at the file. The options must outlive the source. Throws CFailure when it cannot be opened.
    explicit CSource(const SOptions& options);

    /// Opens the file. The source must outlive the reader. Throws CFailure, also for a source without a reader.
    std::unique_ptr<CSourceReader> OpenReader();

    /// SFT_UNKNOWN when neither the options nor the name nor the first line tell.
    SCDeclareConstant::ESourceFileType Type() const { return m_eType; }
    LONGLONG Size() const { return m_status.st_size; }
    FILETIME UpdateTime() const;
    const SLineEnd& LineEnd() const { return m_lineEnd; }
    bool IsDelimited() const;
    /// The settled character set and how sure it is, in words.
    std::string DescribeCharacterSet() const;
    static std::string DescribeType(SCDeclareConstant::ESourceFileType type);

    /// Whether the descriptor has the same file open.
    bool IsFileOf(int descriptor) const;

private:
    void ReadHead();
    void FindType();
    void CheckReadable() const;

    const SOptions& m_options;
    struct stat m_status {};
    std::string m_strHead; ///< the file's first bytes, one fill of a reader
    SLineEnd m_lineEnd;
    SCDeclareConstant::ESourceFileType m_eType = SCDeclareConstant::SFT_UNKNOWN;
    CSourceDataInfo m_info;
};

} // namespace NSTQ::Tool
