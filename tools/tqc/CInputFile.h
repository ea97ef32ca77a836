// One input of the command line as a file that the library can open.
//
// Text from standard input, a named pipe or a device is read from there, once. If the program has to read data twice
// (workbooks, databases and packages, the size for info, rejected rows), the input is first copied to a private file.
// Text in UTF-16 or another encoding that is converted is also read from a copy, in UTF-8. A workbook, database or
// package is detected by its bytes; if its name has another extension, the program creates a link with the right one,
// because the library uses the extension.
#pragma once

#include "CFailure.h"
#include "CFileHead.h"
#include "COpenFile.h"
#include "CTemporaryCopy.h"
#include "SCTextEncodings.h"
#include "SOptions.h"
#include "tqcAccess/ComError.h"

#include <optional>
#include <string>

namespace NSTQ::Tool {

class CInputFile {
public:
    /// Opens a pipe, which waits for its writer; copies the input if necessary; examines the beginning. The options
    /// must outlive it. Throws CFailure.
    CInputFile(const SOptions& options, const std::string& name);
    CInputFile(const CInputFile&) = delete;
    CInputFile& operator=(const CInputFile&) = delete;

    static bool IsStandardInput(const std::string& name) { return name == "-"; }
    /// The last part of a path without its extension; "stdin" for standard input.
    static std::string StemOf(const std::string& name);

    /// As given, for messages.
    const std::string& Name() const { return m_name; }
    /// The path that is read, unless the input is a stream.
    const std::string& Path() const { return m_path; }
    /// The number of a stream, which is read once, for the library; else negative.
    int Stream() const { return m_stream; }
    /// Whether it is the given file itself, and all of its bytes can be examined.
    bool IsFile() const { return m_isFile; }
    /// By the options or the bytes; none if these do not determine it.
    const std::optional<SCDeclareConstant::ESourceFileType>& Type() const { return m_type; }
    const CFileHead& Head() const { return m_head; }
    /// The beginning of what is read, which is in UTF-8 if the text was converted.
    const CFileHead& TextHead() const { return m_encoding ? m_textHead : m_head; }
    /// The encoding that the text was converted from.
    const std::optional<STextEncoding>& Encoding() const { return m_encoding; }

    /// Converts the failure of a workbook or database to a CFailure, about `subject` instead of the path.
    CFailure Explain(const Platform::_com_error& error, const std::string& subject) const;
    CFailure Explain(const Platform::_com_error& error) const { return Explain(error, m_name); }

private:
    void TakeFile();
    void TakeStream(Port::TFile stream);
    void TakeCopyOf(Port::TFile stream);
    bool IsText() const;
    bool MayStream() const;
    bool Convert(Port::TFile rest);

    const SOptions& m_options;
    std::string m_name;
    std::string m_path;
    int m_stream = -1;
    bool m_isFile = false;
    std::optional<SCDeclareConstant::ESourceFileType> m_type;
    CFileHead m_head;
    std::optional<STextEncoding> m_encoding;
    CFileHead m_textHead;
    COpenFile m_opened; ///< a pipe or device that is read
    CTemporaryCopy m_copy;
};

} // namespace NSTQ::Tool
