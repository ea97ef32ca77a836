// One input of the command line as a file that the library can open.
//
// Text from standard input, a named pipe or a device is read from there, once. Where the program has to come back to
// what it has read (workbooks, databases and packages, the size that info tells, rows to be rejected) it is copied to
// a private file first, which is removed again, also by an interrupting signal. The copy of text has no name at all.
// A workbook, database or package is known by its bytes; under a name that does not say so it gets a link with a name
// that does, because the library goes by the name.
#pragma once

#include "CDescriptor.h"
#include "CFailure.h"
#include "CFileHead.h"
#include "SOptions.h"
#include "tqcAccess/ComError.h"

#include <optional>
#include <string>

namespace NSTQ::Tool {

class CInputFile {
public:
    /// Opens a pipe, which waits for its writer; copies what cannot be read where it is; looks at the beginning. The
    /// options must outlive it. Throws CFailure.
    CInputFile(const SOptions& options, const std::string& name);
    ~CInputFile();
    CInputFile(const CInputFile&) = delete;
    CInputFile& operator=(const CInputFile&) = delete;

    static bool IsStandardInput(const std::string& name) { return name == "-"; }

    /// As given, for messages.
    const std::string& Name() const { return m_name; }
    /// Where it is read from, unless that is a stream.
    const std::string& Path() const { return m_path; }
    /// The descriptor, if it is read from one and only once; else negative.
    int Stream() const { return m_stream; }
    /// Whether it is a file under the name that was given, all of whose bytes could be looked at.
    bool IsFile() const { return m_isFile; }
    /// As the options or the bytes tell; none when these do not.
    const std::optional<SCDeclareConstant::ESourceFileType>& Type() const { return m_type; }
    const CFileHead& Head() const { return m_head; }

    /// The failure of a workbook or database in the program's terms.
    CFailure Explain(const Platform::_com_error& error) const;

private:
    void TakeFile();
    void TakeStream(int descriptor);
    bool MayStream() const;
    void CopyStream(int descriptor);
    [[noreturn]] void FailToStore(const std::string& hint) const;
    void CreateNameless();
    void CreateNamed(const std::string& extension);
    void LinkUnderExtension(const std::string& extension);

    const SOptions& m_options;
    std::string m_name;
    std::string m_path;
    int m_stream = -1;
    bool m_isFile = false;
    std::optional<SCDeclareConstant::ESourceFileType> m_type;
    CFileHead m_head;
    CDescriptor m_opened;    ///< a pipe or device that is read
    CDescriptor m_copy;      ///< of a stream
    std::string m_temporary; ///< what is to be removed in the end
};

} // namespace NSTQ::Tool
