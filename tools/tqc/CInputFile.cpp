#include "CInputFile.h"

#include "SCContentProbe.h"
#include "SCPassWord.h"
#include "SCSignals.h"
#include "SCTypeNames.h"
#include "tqcAccess/ErrorText.h"

#include <array>

namespace NSTQ::Tool {
namespace {

/// For messages.
std::string TemporaryFolder() {
    std::string folder;
    return Port::FindTemporaryFolder(folder) == 0 ? folder : Port::GetTemporaryFolderVariable();
}

bool IsStream(const std::string& name) {
    Port::SStatus status;
    return Port::GetStatus(name, status) == 0 && status.kind != Port::EKind::Regular &&
           status.kind != Port::EKind::Folder;
}

} // namespace

CInputFile::CInputFile(const SOptions& options, const std::string& name)
    : m_options(options), m_name(name), m_path(name), m_type(options.type) {
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

CInputFile::~CInputFile() {
    m_copy.Reset(Port::noFile);
    if (m_temporary.empty())
        return;
    const SCSignals::CHeld held;
    Port::Discard(m_temporary.c_str());
    SCSignals::ForgetFile(m_temporary.c_str());
}

void CInputFile::TakeFile() {
    m_isFile = true;
    const COpenFile file = CFileHead::Open(m_path, m_name);
    m_head = CFileHead(file.Get(), m_name);
    if (!m_type)
        m_type = SCContentProbe::FindType(file.Get(), m_head);
    const bool needsName = m_type && !SCTypeNames::IsText(*m_type) && SCTypeNames::OfFile(m_name) != *m_type;
    if (needsName)
        LinkUnderExtension('.' + SCTypeNames::Of(*m_type));
}

void CInputFile::TakeStream(Port::TFile stream) {
    if (!m_type && !m_options.separator && IsStandardInput(m_name))
        throw CFailure(EExitStatus::Usage, "-",
                       "the type of standard input is unknown; give --type: " + SCTypeNames::All());
    const auto type = m_type.value_or(SCTypeNames::OfFile(m_name));
    const bool isText = type == SCDeclareConstant::SFT_UNKNOWN || SCTypeNames::IsText(type);
    if (isText && MayStream()) {
        m_stream = Port::NumberOf(stream);
        m_head = CFileHead(stream, m_name);
        return;
    }
    if (isText) {
        CreateNameless();
    } else {
        m_type = type; // the copy goes by it
        CreateNamed('.' + SCTypeNames::Of(type));
    }
    CopyStream(stream);
    LONGLONG start = 0;
    Port::Seek(m_copy.Get(), 0, Port::EOrigin::Start, start);
    m_head = CFileHead(m_copy.Get(), m_name);
}

bool CInputFile::MayStream() const {
    return m_options.command != SOptions::ECommand::Info && m_options.rejects.empty();
}

/// Copies until the end of the stream.
void CInputFile::CopyStream(Port::TFile stream) {
    std::array<char, 65536> bytes{};
    for (;;) {
        DWORD got = 0;
        DWORD put = 0;
        if (const DWORD code = Port::Read(stream, bytes.data(), bytes.size(), got); code != 0)
            throw CFailure(EExitStatus::NotFound, m_name, "cannot be read: " + Platform::GetErrorText(code));
        if (got == 0)
            return;
        if (const DWORD code = Port::Write(m_copy.Get(), bytes.data(), got, put); code != 0)
            FailToStore(code,
                        std::string("; set ") + Port::GetTemporaryFolderVariable() + " to a folder with more room");
    }
}

void CInputFile::FailToStore(DWORD code, const std::string& hint) const {
    const std::string input = IsStandardInput(m_name) ? "standard input" : m_name;
    throw CFailure(EExitStatus::OutputFailed, TemporaryFolder(),
                   input + " cannot be stored there: " + Platform::GetErrorText(code) + hint);
}

/// If the file system supports files without a name, nothing remains, whatever ends the program.
void CInputFile::CreateNameless() {
    const SCSignals::CHeld held;
    Port::TFile file = Port::noFile;
    bool isNamed = false;
    if (const DWORD code = Port::MakeTemporaryFile(file, m_path, isNamed); code != 0)
        FailToStore(code, "");
    m_copy.Reset(file);
    if (isNamed)
        RemoveLater(m_path);
}

void CInputFile::CreateNamed(const std::string& extension) {
    const SCSignals::CHeld held;
    Port::TFile file = Port::noFile;
    if (const DWORD code = Port::MakeTemporaryFile(extension, file, m_path); code != 0)
        FailToStore(code, "");
    m_copy.Reset(file);
    RemoveLater(m_path);
}

void CInputFile::LinkUnderExtension(const std::string& extension) {
    const SCSignals::CHeld held;
    if (const DWORD code = Port::MakeTemporaryLink(m_name, extension, m_path); code != 0)
        throw CFailure(EExitStatus::OutputFailed, TemporaryFolder(),
                       m_name + " cannot be given another name there: " + Platform::GetErrorText(code));
    RemoveLater(m_path);
}

void CInputFile::RemoveLater(const std::string& path) {
    m_temporary = path;
    SCSignals::RemoveFile(m_temporary.c_str());
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
