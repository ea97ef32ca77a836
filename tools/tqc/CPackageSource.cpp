#include "CPackageSource.h"

#include "CFailure.h"
#include "SCPassWord.h"
#include "SCPathText.h"
#include "SCSignals.h"
#include "SCTypeNames.h"
#include "tqcAccess/ErrorText.h"

#include <algorithm>

namespace NSTQ::Tool {
namespace {

/// The reasons why a package cannot be unpacked; without a text the error of the system applies.
struct SFault {
    DWORD code;
    EExitStatus status;
    const char* text;
};

/// Traditional encryption cannot distinguish the two.
constexpr DWORD unclearFault = 23;

constexpr SFault faults[] = {
    {13, EExitStatus::Unsupported, "it contains names, links or sizes that are not allowed"},
    {unclearFault, EExitStatus::Password, "the password is wrong, or the package is damaged"},
    {50, EExitStatus::Unsupported, "its compression or encryption method is not supported"},
    {86, EExitStatus::Password, "the password is wrong"},
    {1392, EExitStatus::Unsupported, "the package is damaged"},
    {0, EExitStatus::OutputFailed, nullptr},
};

const SFault& FindFault(DWORD code) {
    return *std::find_if(std::begin(faults), std::end(faults) - 1,
                         [code](const SFault& fault) { return fault.code == code; });
}

} // namespace

CPackageSource::CPackageSource(const SOptions& options, const CInputFile& input)
    : CLockableSource(options, input, CTextFile::CodePageOf(options, input.Head().Bytes())),
      m_converted(input.Name()) {
    Describe(m_info, SCDeclareConstant::SFT_XTQF);
}

std::unique_ptr<ISourceReader> CPackageSource::OpenReader() {
    if (!m_options.sheet.empty())
        throw CFailure(EExitStatus::Usage, m_input.Name(),
                       "--sheet is for workbooks and databases; " + SCTypeNames::DescribeThis(Type()));
    Unpack(true);
    auto reader = m_text->OpenDelimited(m_info);
    m_dataPage.emplace(m_text->CodePage());
    return reader;
}

void CPackageSource::LookInside() {
    if (Unpack(false))
        m_dataPage.emplace(m_text->CodePage());
}

/// Unpacks the package and examines its data file. False when that needs a password that must not be asked for.
bool CPackageSource::Unpack(bool mayAsk) {
    const auto result = Prepare(m_info, mayAsk);
    if (result == CSourceDataInfo::SDO_PASSWORD_ERROR && IsLocked() && !mayAsk && !SCPassWord::IsGiven(m_options))
        return false;
    const char* path = nullptr;
    if (result != CSourceDataInfo::SDO_PACKAGE || !m_info.GetFilePath(path))
        Explain();
    const std::string dataPath = SCPathText::ToSystem(path);
    if (Port::SStatus status; Port::GetStatus(dataPath, status) != 0)
        throw CFailure(EExitStatus::Unsupported, m_input.Name(),
                       "the package does not contain TqData/SourceFile.csv");
    TakeText(dataPath);
    return true;
}

void CPackageSource::TakeText(const std::string& path) {
    const COpenFile file = CFileHead::Open(path, m_input.Name());
    CFileHead head(file.Get(), m_input.Name());
    CTextFile::SPlace place{m_input.Name(), path, -1, SCTextEncodings::Choose(m_options.encoding, head.Bytes())};
    if (place.original) {
        place.hasBom = SCTextProbe::HasUtf16Bom(head.Bytes());
        m_converted.CreateNameless();
        m_converted.Fill(head.Bytes(), file.Get(), SCTextEncodings::MakeDecoder(*place.original, place.name).get());
        place.path = m_converted.Path();
        m_info.SetXtqfSourceFilePath(SCPathText::ToLibrary(place.path).c_str());
        head = CFileHead(m_converted.File(), m_input.Name());
    }
    m_text.emplace(m_options, std::move(place), std::move(head));
}

CSourceDataInfo::ESourceDataOpen CPackageSource::TryToPrepare() {
    // The clone removes the folder that the previous attempt may have left; the description only knows the last one.
    delete m_info.CreateClone();
    // The folder must not exist without being known.
    const SCSignals::CHeld held;
    const auto result = m_info.PrepareReadSourceData(true);
    m_folder.Set(m_info.GetUncompressFolderPath());
    return result;
}

bool CPackageSource::IsLocked() const {
    return FindFault(m_info.GetErrorCode()).status == EExitStatus::Password;
}

std::string CPackageSource::DescribeRefusal() const {
    return m_info.GetErrorCode() == unclearFault ? "Wrong password, or a damaged package.\n"
                                                 : CLockableSource::DescribeRefusal();
}

/// Throws the reason why the package was not unpacked.
void CPackageSource::Explain() const {
    if (!m_input.Head().Bytes().starts_with("PK"))
        throw CFailure(EExitStatus::Unsupported, m_input.Name(), "not a package: it is not a zip archive");
    const SFault& fault = FindFault(m_info.GetErrorCode());
    const bool needsPassword = fault.status == EExitStatus::Password && *m_info.GetPassWordString() == '\0';
    throw CFailure(fault.status, m_input.Name(),
                   needsPassword           ? "needs a password; give it with --password-file or --password-fd"
                   : fault.text != nullptr ? std::string("cannot be unpacked: ") + fault.text
                                           : "cannot be unpacked into the temporary folder: " +
                                                 Platform::GetErrorText(m_info.GetErrorCode()));
}

} // namespace NSTQ::Tool
