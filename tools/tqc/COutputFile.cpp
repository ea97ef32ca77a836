#include "COutputFile.h"

#include "CFailure.h"
#include "tqcAccess/ErrorText.h"

namespace NSTQ::Tool {

COutputFile::COutputFile(const SOptions& options, const std::string& name)
    : m_target(name), m_form{options.outputSeparator, options.outputLineEnd.first, options.outputLineEnd.second} {
    m_writer.SetSeparator(m_form.cSeparator);
    m_writer.SetDelimiter(m_form.cPreDelimiter, m_form.cPostDelimiter);
    m_writer.SetQuoteLineEnds(true);
    // Before the writer opens the same file, whose position is then after the BOM.
    if (options.addBom)
        m_target.Write(reinterpret_cast<const char*>(SCDataAccessDefine::BOM_UTF8),
                       sizeof SCDataAccessDefine::BOM_UTF8);
    if (!m_writer.FileOpen(m_target.OpenPath().c_str()))
        CheckWriter();
}

COutputFile::~COutputFile() {
    m_writer.FileClose();
}

/// False when the reader has closed the pipe, because it needs no more data.
bool COutputFile::CheckWriter() {
    const DWORD code = m_writer.GetErrorCode();
    if (code == brokenPipe)
        return false;
    if (code != 0)
        throw CFailure(EExitStatus::OutputFailed, m_target.Describe(), Platform::GetErrorText(code));
    return true;
}

bool COutputFile::WriteRow(const char* const* fields, const WORD* lengths, DWORD count) {
    m_writer.WriteLineData(fields, lengths, count);
    return CheckWriter();
}

bool COutputFile::WriteText(const char* text, DWORD size) {
    // The writer adds the last line end.
    m_writer.WriteHeaderData(text, static_cast<WORD>(size - (m_form.cPostDelimiter == 0 ? 1 : 2)));
    return CheckWriter();
}

void COutputFile::Close() {
    m_writer.FileClose();
    CheckWriter();
}

} // namespace NSTQ::Tool
