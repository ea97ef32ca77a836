// One input of the command line as a file that the library can open.
//
// Text from standard input, a named pipe or a device is read from there, once. Where the program has to come back to
// what it has read (workbooks, databases and packages, the size that info tells, rows to be rejected) it is copied to
// a private file first, which is removed again, also by an interrupting signal. The copy of text has no name at all.
// A workbook, database or package is known by its bytes; under a name that does not say so it gets a link with a name
// that does, because the library goes by the name.
#pragma once

#include "SOptions.h"

#include "CDescriptor.h"
#include "CFailure.h"
#include "tqcAccess/ComError.h"

#include <string>

namespace NSTQ::Tool {

class CInputFile {
public:
    /// Opens a pipe, which waits for its writer; copies what cannot be read where it is. Throws CFailure.
    CInputFile(const SOptions& options, const std::string& name);
    ~CInputFile();
    CInputFile(const CInputFile&) = delete;
    CInputFile& operator=(const CInputFile&) = delete;

    static bool IsStandardInput(const std::string& name) { return name == "-"; }

    /// The options for this input alone; they live as long as it does.
    const SOptions& Options() const { return m_options; }

    /// The failure of a workbook or database in the program's terms.
    CFailure Explain(const Platform::_com_error& error) const;

private:
    void TakeStream(int descriptor);
    bool MayStream() const;
    void CopyStream(int descriptor);
    [[noreturn]] void FailToStore(const std::string& hint) const;
    void CreateNameless();
    void CreateNamed(const std::string& extension);
    void FindContent();
    void LinkUnderExtension(const std::string& extension);
    std::string PrivateName(const std::string& extension) const;

    SOptions m_options;
    CDescriptor m_stream;    ///< a pipe or device that is read
    CDescriptor m_copy;      ///< of a stream
    std::string m_strRemove; ///< what is to be removed in the end
};

} // namespace NSTQ::Tool
