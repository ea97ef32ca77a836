// Where the rows go: standard output, a device or pipe that is there, or a file that is replaced when all is written.
//
// The rows are written by CCsvOutPut. It is given descriptors that are open already ("/dev/fd/N"), so that neither
// the code page nor the length of a path matters, and nothing is truncated.
#pragma once

#include "CCsvOutPut.h"
#include "CTemporaryFile.h"
#include "SOptions.h"

#include <memory>
#include <string>

namespace NSTQ::Tool {

class COutputFile {
public:
    /// Opens the target that the options name. Throws CFailure.
    explicit COutputFile(const SOptions& options);
    /// Removes what was not finished.
    ~COutputFile();
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;

    /// False when nobody reads the pipe any more. Throws CFailure when the row cannot be written.
    bool WriteRow(const char* const* ppFields, const WORD* pLengths, DWORD dwCount);
    /// Writes what is held back and puts the file into its place. Throws CFailure.
    void Finish();

    bool IsStandardOutput() const { return m_strTarget.empty(); }

private:
    std::string OpenTarget();
    void WriteMark();
    std::string DescribeTarget() const;
    bool CheckWriter();

    std::string m_strTarget; ///< empty for standard output
    std::unique_ptr<CTemporaryFile> m_pTemporary;
    int m_iDescriptor = -1; ///< of a device or pipe
    NSTQCore::CCsvOutPut m_writer;
};

} // namespace NSTQ::Tool
