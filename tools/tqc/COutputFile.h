// The rows as CSV, written by CCsvOutPut to a target that is open already.
#pragma once

#include "CCsvOutPut.h"
#include "COutputTarget.h"
#include "SOptions.h"

namespace NSTQ::Tool {

class COutputFile {
public:
    /// Opens the target `name`; the options tell the form of the rows. Throws CFailure.
    COutputFile(const SOptions& options, const std::string& name);
    /// Removes what was not finished.
    ~COutputFile();
    COutputFile(const COutputFile&) = delete;
    COutputFile& operator=(const COutputFile&) = delete;

    /// False when nobody reads the pipe any more. Throws CFailure when the row cannot be written.
    bool WriteRow(const char* const* fields, const WORD* lengths, DWORD count);
    /// Writes what is held back. Throws CFailure.
    void Close();
    /// Puts the closed file into its place. Throws CFailure.
    void Replace() { m_target.Replace(); }

    bool IsStandardOutput() const { return m_target.IsStandardOutput(); }

private:
    bool CheckWriter();

    COutputTarget m_target;
    NSTQCore::CCsvOutPut m_writer;
};

} // namespace NSTQ::Tool
