#include "CSource.h"

#include "CFailure.h"
#include "SCCodePageNames.h"
#include "SCErrorText.h"
#include "SCPathText.h"
#include "SCTextProbe.h"
#include "platform/CodePage.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace NSTQ::Tool {
namespace {

class CReadDescriptor {
public:
    explicit CReadDescriptor(const std::string& path)
        // Without O_NONBLOCK a pipe would make the call wait for a writer before it can be refused.
        : m_iDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)) {}
    CReadDescriptor(const CReadDescriptor&) = delete;
    CReadDescriptor& operator=(const CReadDescriptor&) = delete;
    ~CReadDescriptor() {
        if (m_iDescriptor >= 0)
            ::close(m_iDescriptor);
    }
    int Get() const { return m_iDescriptor; }

private:
    int m_iDescriptor;
};

/// Reads until the text is full or the file ends. False on an error.
bool FillFrom(int descriptor, std::string& text) {
    std::size_t size = 0;
    while (size < text.size()) {
        const ssize_t got = ::read(descriptor, text.data() + size, text.size() - size);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return false;
        if (got == 0)
            break;
        size += static_cast<std::size_t>(got);
    }
    text.resize(size);
    return true;
}

} // namespace

CSource::CSource(const SOptions& options) : m_options(options) {
    ReadHead();
    m_lineEnd = options.lineEnd
                    ? *options.lineEnd
                    : SCTextProbe::FindLineEnd(m_strHead, options.separator.value_or(SCDataAccessDefine::CAMMA_CODE));
    FindType();
    m_info.SetDelimiter(m_lineEnd.cPre, m_lineEnd.cPost);
    m_info.SetReadCharSet(options.eCharSet);
}

void CSource::ReadHead() {
    const std::string& path = m_options.strFile;
    const CReadDescriptor file(path);
    if (file.Get() < 0 || ::fstat(file.Get(), &m_status) != 0)
        throw CFailure(ES_NOT_FOUND, path, SCErrorText::OfSystem(errno));
    if (S_ISDIR(m_status.st_mode))
        throw CFailure(ES_NOT_FOUND, path, "a folder; give a file in it");
    if (!S_ISREG(m_status.st_mode))
        throw CFailure(ES_UNSUPPORTED, path, "a pipe or a device; store its data in a file first");
    m_strHead.resize(SCDataAccessDefine::READ_BUFF_SIZE);
    if (!FillFrom(file.Get(), m_strHead))
        throw CFailure(ES_UNSUPPORTED, path, SCErrorText::OfSystem(errno));
}

/// The library decides by the extension and by a first line that ends in CR LF; other line ends are looked at here.
void CSource::FindType() {
    const std::string path = SCPathText::ToLibrary(m_options.strFile);
    m_info.SetCommonInfo(path.c_str(), m_options.type.value_or(SCDeclareConstant::SFT_UNKNOWN));
    m_info.GetSourceFileType(m_eType);
    // A package's reader would ask for its unpacked data file; under another type it is read as it stands.
    if (m_options.type && m_eType == SCDeclareConstant::SFT_XTQF)
        m_info.SetXtqfSourceFilePath(path.c_str());
    if (m_options.type) {
        m_eType = *m_options.type;
    } else if (m_eType == SCDeclareConstant::SFT_UNKNOWN || m_eType == SCDeclareConstant::SFT_FIX) {
        const auto sniffed = SCTextProbe::FindType(m_strHead, m_lineEnd);
        if (sniffed != SCDeclareConstant::SFT_UNKNOWN)
            m_eType = sniffed;
        else if (m_options.separator || m_strHead.empty())
            m_eType = SCDeclareConstant::SFT_CSV;
    }
}

bool CSource::IsDelimited() const {
    return m_eType == SCDeclareConstant::SFT_CSV || m_eType == SCDeclareConstant::SFT_TXT;
}

void CSource::CheckReadable() const {
    const std::string& path = m_options.strFile;
    if (m_eType == SCDeclareConstant::SFT_UNKNOWN)
        throw CFailure(ES_UNSUPPORTED, path,
                       "unknown type: neither TAB nor comma in its first line; give --type or --separator");
    if (m_eType == SCDeclareConstant::SFT_FIX)
        throw CFailure(ES_UNSUPPORTED, path,
                       "fixed-length text, which this program does not read yet; --type csv makes each line one row");
    if (!IsDelimited())
        throw CFailure(ES_UNSUPPORTED, path,
                       DescribeType(m_eType) + ", which this program does not read yet; save it as CSV");
    if (SCTextProbe::HasUtf16Mark(m_strHead))
        throw CFailure(ES_UNSUPPORTED, path, "UTF-16 text; convert it with: iconv -f UTF-16 -t UTF-8");
}

std::unique_ptr<CSourceReader> CSource::OpenReader() {
    CheckReadable();
    // One field more than wanted shows that there are more; fields are cut by the program, which then knows of it.
    auto reader = std::make_unique<CSourceReader>(m_options.dwMaxFields + 1, m_options.dwMaxLineSize, LIMIT_MAX,
                                                  m_options.bQuoteNewLine);
    const char separator =
        m_eType == SCDeclareConstant::SFT_TXT ? SCDataAccessDefine::TAB_CODE : SCDataAccessDefine::CAMMA_CODE;
    reader->SetSeparator(m_options.separator.value_or(separator));
    reader->SetDelimiter(m_lineEnd.cPre, m_lineEnd.cPost);
    if (!reader->FileOpen(&m_info))
        throw CFailure(ES_NOT_FOUND, m_options.strFile, SCErrorText::OfLibrary(reader->GetErrorCode()));

    const bool ansiIsUtf8 = Platform::GetAnsiCodePage() == Platform::CP_UTF8;
    const bool isMarkAlone =
        m_options.eCharSet != CSourceDataInfo::RCS_ANSI && Size() == 3 && SCTextProbe::HasUtf8Mark(m_strHead);
    if (isMarkAlone)
        reader->MoveFileEnd();
    // What needs no conversion is read by the grammar that keeps the spaces inside fields; the mark is behind it.
    if (ansiIsUtf8 || reader->GetCharSet() == CSourceDataInfo::RCS_AUTO)
        reader->SetCharSet(CSourceDataInfo::RCS_ANSI);
    return reader;
}

FILETIME CSource::UpdateTime() const {
    FILETIME time{};
    m_info.GetUpDateDateTime(time);
    return time;
}

std::string CSource::DescribeCharacterSet() const {
    const bool hasMark = SCTextProbe::HasUtf8Mark(m_strHead);
    if (SCTextProbe::HasUtf16Mark(m_strHead))
        return "UTF-16 (with a mark)";
    if (m_options.eCharSet != CSourceDataInfo::RCS_ANSI && hasMark)
        return "UTF-8 (with a mark)";
    const bool isUtf8 = m_options.eCharSet == CSourceDataInfo::RCS_UTF8 || m_options.uCodePage == Platform::CP_UTF8;
    if (!isUtf8)
        return "code page " + SCCodePageNames::Describe(m_options.uCodePage);
    return SCTextProbe::IsUtf8(m_strHead) ? "UTF-8" : "not UTF-8 (give --code-page, such as 932)";
}

std::string CSource::DescribeType(SCDeclareConstant::ESourceFileType type) {
    switch (type) {
    case SCDeclareConstant::SFT_XTQF:
        return "package";
    case SCDeclareConstant::SFT_CSV:
        return "comma-separated text";
    case SCDeclareConstant::SFT_TXT:
        return "tab-separated text";
    case SCDeclareConstant::SFT_FIX:
        return "fixed-length text";
    case SCDeclareConstant::SFT_XLS:
        return "Excel 2003 workbook";
    case SCDeclareConstant::SFT_MDB:
        return "Access 2003 database";
    case SCDeclareConstant::SFT_XLSX:
        return "Excel 2007 workbook";
    case SCDeclareConstant::SFT_ACCDB:
        return "Access 2007 database";
    case SCDeclareConstant::SFT_UNKNOWN:
        break;
    }
    return "unknown";
}

bool CSource::IsFileOf(int descriptor) const {
    struct stat other {};
    return ::fstat(descriptor, &other) == 0 && S_ISREG(other.st_mode) && other.st_dev == m_status.st_dev &&
           other.st_ino == m_status.st_ino;
}

} // namespace NSTQ::Tool
