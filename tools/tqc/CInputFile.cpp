#include "CInputFile.h"

#include "SCContentProbe.h"
#include "SCPassWord.h"
#include "SCTypeNames.h"
#include "tqcAccess/ErrorText.h"

namespace NSTQ::Tool {
namespace {

bool IsStream(const std::string& name) {
    Port::SStatus status;
    return Port::GetStatus(name, status) == 0 && status.kind != Port::EKind::Regular &&
           status.kind != Port::EKind::Folder;
}

} // namespace

CInputFile::CInputFile(const SOptions& options, const std::string& name)
    : m_options(options), m_name(name), m_path(name), m_type(options.type), m_copy(name) {
    if (IsStandardInput(name)) {
        TakeStream(Port::GetStandardStream(Port::EStream::Input));
    } else if (IsStream(name)) {
        Port::TFile file = Port::noFile;
        if (const DWORD code = Port::OpenToRead(name, true, file); code != 0)
            throw CFailure(EExitStatus::NotFound, name, Platform::GetErrorText(code));
        m_opened.Reset(file);
        TakeStream(file);
    } else {
        TakeFile();
    }
}

std::string CInputFile::StemOf(const std::string& name) {
    if (IsStandardInput(name))
        return "stdin";
    const std::string last = name.substr(name.find_last_of('/') + 1);
    const std::size_t dot = last.find_last_of('.');
    return dot == std::string::npos || dot == 0 ? last : last.substr(0, dot);
}

void CInputFile::TakeFile() {
    m_isFile = true;
    const COpenFile file = CFileHead::Open(m_path, m_name);
    m_head = CFileHead(file.Get(), m_name);
    if (!m_type)
        m_type = SCContentProbe::FindType(file.Get(), m_head);
    if (IsText()) {
        LONGLONG position = 0;
        Port::Seek(file.Get(), static_cast<LONGLONG>(m_head.Bytes().size()), Port::EOrigin::Start, position);
        m_isFile = !Convert(file.Get());
    }
    const bool needsName = m_type && !SCTypeNames::IsText(*m_type) && SCTypeNames::OfFile(m_name) != *m_type;
    if (needsName) {
        m_copy.LinkTo(m_name, '.' + SCTypeNames::Of(*m_type));
        m_path = m_copy.Path();
    }
}

void CInputFile::TakeStream(Port::TFile stream) {
    if (!m_type && !m_options.separator && IsStandardInput(m_name))
        throw CFailure(EExitStatus::Usage, "-",
                       "the type of standard input is unknown; give --type: " + SCTypeNames::All());
    if (!IsText()) {
        m_type = m_type.value_or(SCTypeNames::OfFile(m_name)); // the copy goes by it
        m_copy.CreateNamed('.' + SCTypeNames::Of(*m_type));
        TakeCopyOf(stream);
        return;
    }
    m_head = CFileHead(stream, m_name);
    if (Convert(stream))
        return;
    if (MayStream()) {
        m_stream = Port::NumberOf(stream);
        return;
    }
    m_copy.CreateNameless();
    TakeCopyOf(stream);
}

/// What was read of it is in the head.
void CInputFile::TakeCopyOf(Port::TFile stream) {
    m_copy.Fill(m_head.Bytes(), stream, nullptr);
    m_path = m_copy.Path();
    m_head = CFileHead(m_copy.File(), m_name);
}

/// By the options, the bytes or the name, as long as none of them has another type.
bool CInputFile::IsText() const {
    const auto type = m_type.value_or(SCTypeNames::OfFile(m_name));
    return type == SCDeclareConstant::SFT_UNKNOWN || SCTypeNames::IsText(type);
}

bool CInputFile::MayStream() const {
    return m_options.command != SOptions::ECommand::Info && m_options.rejects.empty();
}

/// Converts text to UTF-8 in a copy, if its encoding requires that: the head and what follows it in the file.
bool CInputFile::Convert(Port::TFile rest) {
    m_encoding = SCTextEncodings::Choose(m_options.encoding, m_head.Bytes());
    if (!m_encoding)
        return false;
    m_copy.CreateNameless();
    m_copy.Fill(m_head.Bytes(), rest, SCTextEncodings::MakeDecoder(*m_encoding, m_name).get());
    m_path = m_copy.Path();
    m_textHead = CFileHead(m_copy.File(), m_name);
    return true;
}

CFailure CInputFile::Explain(const Platform::_com_error& error, const std::string& subject) const {
    std::string text = error.what();
    const std::size_t at = text.find(m_path);
    if (at != std::string::npos)
        text.replace(at, m_path.size(), subject);
    else
        text = subject + ": " + text;
    if (SCPassWord::IsRefusal(error))
        return {EExitStatus::Password,
                text + (SCPassWord::IsGiven(m_options) ? "" : "; give it with --password-file or --password-fd")};
    switch (error.Error()) {
    case Platform::DB_E_DATAOVERFLOW:
    case Platform::E_OUTOFMEMORY:
        return {EExitStatus::Limit, text};
    default:
        return {EExitStatus::Unsupported, text};
    }
}

} // namespace NSTQ::Tool
