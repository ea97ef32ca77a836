// Writes the rows as CSV with CCsvOutPut to a target that is already open.
#pragma once

#include "CCsvOutPut.h"
#include "COutputTarget.h"
#include "SOptions.h"

namespace NSTQ::Tool {

class COutputFile {
public:
    /// Opens the target `name`; the options determine the form of the rows. Throws CFailure.
    COutputFile(const SOptions& options, const std::string& name);
    /// Removes an incomplete output.
    ~COutputFile();
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;

    /// False when the reader has closed the pipe. Throws CFailure when the row cannot be written.
    bool WriteRow(const char* const* fields, const WORD* lengths, DWORD count);
    /// Writes the buffer. Throws CFailure.
    void Close();
    /// Replaces the target by the closed file. Throws CFailure.
    void Replace() { m_target.Replace(); }

    bool IsStandardOutput() const { return m_target.IsStandardOutput(); }

private:
    bool CheckWriter();

    COutputTarget m_target;
    NSTQCore::CCsvOutPut m_writer;
};

} // namespace NSTQ::Tool
