#include "CInputFile.h"

#include "SCContentProbe.h"
#include "SCErrorText.h"
#include "SCPassWord.h"
#include "SCSignals.h"
#include "SCTypeNames.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>

namespace NSTQ::Tool {
namespace {

std::string TemporaryFolder() {
    const char* const folder = std::getenv("TMPDIR");
    return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

/// A template for a name in the temporary folder.
std::string PrivateName(const std::string& extension) {
    return TemporaryFolder() + "/tqc-XXXXXX" + extension;
}

bool IsStream(const std::string& name) {
    struct stat status {};
    return ::stat(name.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

} // namespace

CInputFile::CInputFile(const SOptions& options, const std::string& name)
    : m_options(options), m_name(name), m_path(name), m_type(options.type) {
    if (IsStandardInput(name)) {
        TakeStream(STDIN_FILENO);
    } else if (IsStream(name)) {
        m_opened.Reset(::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
        if (m_opened.Get() < 0)
            throw CFailure(EExitStatus::NotFound, name, SCErrorText::OfSystem(errno));
        TakeStream(m_opened.Get());
    } else {
        TakeFile();
    }
}

CInputFile::~CInputFile() {
    if (m_temporary.empty())
        return;
    const SCSignals::CHeld held;
    ::unlink(m_temporary.c_str());
    SCSignals::ForgetFile(m_temporary.c_str());
}

void CInputFile::TakeFile() {
    m_isFile = true;
    const CDescriptor file = CFileHead::Open(m_path, m_name);
    m_head = CFileHead(file.Get(), m_name);
    if (!m_type)
        m_type = SCContentProbe::FindType(file.Get(), m_head);
    const bool needsName = m_type && !SCTypeNames::IsText(*m_type) && SCTypeNames::OfFile(m_name) != *m_type;
    if (needsName)
        LinkUnderExtension('.' + SCTypeNames::Of(*m_type));
}

void CInputFile::TakeStream(int descriptor) {
    if (!m_type && !m_options.separator && IsStandardInput(m_name))
        throw CFailure(EExitStatus::Usage, "-",
                       "the type of standard input is unknown; give --type: " + SCTypeNames::All());
    const auto type = m_type.value_or(SCTypeNames::OfFile(m_name));
    const bool isText = type == SCDeclareConstant::SFT_UNKNOWN || SCTypeNames::IsText(type);
    if (isText && MayStream()) {
        m_stream = descriptor;
        m_head = CFileHead(descriptor, m_name);
        return;
    }
    if (isText) {
        CreateNameless();
    } else {
        m_type = type; // the copy goes by it
        CreateNamed('.' + SCTypeNames::Of(type));
    }
    CopyStream(descriptor);
    ::lseek(m_copy.Get(), 0, SEEK_SET);
    m_head = CFileHead(m_copy.Get(), m_name);
}

bool CInputFile::MayStream() const {
    return m_options.command != SOptions::ECommand::Info && m_options.rejects.empty();
}

/// Copies until the end of the stream.
void CInputFile::CopyStream(int descriptor) {
    std::array<char, 65536> bytes{};
    for (;;) {
        const ssize_t got = CDescriptor::Read(descriptor, bytes.data(), bytes.size());
        if (got < 0)
            throw CFailure(EExitStatus::NotFound, m_name, "cannot be read: " + SCErrorText::OfSystem(errno));
        if (got == 0)
            return;
        for (ssize_t done = 0; done < got;) {
            const ssize_t put = ::write(m_copy.Get(), bytes.data() + done, static_cast<std::size_t>(got - done));
            if (put < 0 && errno != EINTR)
                FailToStore("; set TMPDIR to a folder with more room");
            done += std::max<ssize_t>(put, 0);
        }
    }
}

/// With the reason from the system.
void CInputFile::FailToStore(const std::string& hint) const {
    const std::string input = IsStandardInput(m_name) ? "standard input" : m_name;
    throw CFailure(EExitStatus::OutputFailed, TemporaryFolder(),
                   input + " cannot be stored there: " + SCErrorText::OfSystem(errno) + hint);
}

/// If the file system supports files without a name, nothing remains, whatever ends the program.
void CInputFile::CreateNameless() {
    m_copy.Reset(::open(TemporaryFolder().c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (m_copy.Get() < 0) {
        const SCSignals::CHeld held;
        CreateNamed("");
        ::unlink(m_temporary.c_str());
        SCSignals::ForgetFile(m_temporary.c_str());
        m_temporary.clear();
    }
    m_path = "/proc/self/fd/" + std::to_string(m_copy.Get());
}

void CInputFile::CreateNamed(const std::string& extension) {
    std::string path = PrivateName(extension);
    const SCSignals::CHeld held;
    m_copy.Reset(::mkostemps(path.data(), static_cast<int>(extension.size()), O_CLOEXEC));
    if (m_copy.Get() < 0)
        FailToStore("");
    m_path = m_temporary = path;
    SCSignals::RemoveFile(m_temporary.c_str());
}

void CInputFile::LinkUnderExtension(const std::string& extension) {
    std::array<char, PATH_MAX> real{};
    if (::realpath(m_name.c_str(), real.data()) == nullptr)
        throw CFailure(EExitStatus::NotFound, m_name, SCErrorText::OfSystem(errno));
    std::string path = PrivateName(extension);
    const SCSignals::CHeld held;
    const CDescriptor file(::mkostemps(path.data(), static_cast<int>(extension.size()), O_CLOEXEC));
    // The name belongs to this program: the permissions of the folder prevent others from using it meanwhile.
    if (file.Get() < 0 || ::unlink(path.c_str()) != 0 || ::symlink(real.data(), path.c_str()) != 0)
        throw CFailure(EExitStatus::OutputFailed, TemporaryFolder(), SCErrorText::OfSystem(errno));
    m_path = m_temporary = path;
    SCSignals::RemoveFile(m_temporary.c_str());
}

CFailure CInputFile::Explain(const Platform::_com_error& error) const {
    std::string text = error.what();
    const std::size_t at = text.find(m_path);
    if (at != std::string::npos)
        text.replace(at, m_path.size(), m_name);
    else
        text = m_name + ": " + text;
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
