#include "CTemporaryCopy.h"

#include "CFailure.h"
#include "SCSignals.h"
#include "tqcAccess/ErrorText.h"

namespace NSTQ::Tool {
namespace {

/// For messages.
std::string TemporaryFolder() {
    std::string folder;
    return Port::FindTemporaryFolder(folder) == 0 ? folder : Port::GetTemporaryFolderVariable();
}

} // namespace

CTemporaryCopy::~CTemporaryCopy() {
    m_file.Reset(Port::noFile);
    if (!m_isToRemove)
        return;
    const SCSignals::CHeld held;
    Port::Discard(m_path.c_str());
    SCSignals::ForgetFile(m_path.c_str());
}

void CTemporaryCopy::CreateNameless() {
    const SCSignals::CHeld held;
    Port::TFile file = Port::noFile;
    bool isNamed = false;
    if (const DWORD code = Port::MakeTemporaryFile(file, m_path, isNamed); code != 0)
        FailToStore(code, "");
    m_file.Reset(file);
    if (isNamed)
        RemoveLater();
}

void CTemporaryCopy::CreateNamed(const std::string& extension) {
    const SCSignals::CHeld held;
    Port::TFile file = Port::noFile;
    if (const DWORD code = Port::MakeTemporaryFile(extension, file, m_path); code != 0)
        FailToStore(code, "");
    m_file.Reset(file);
    RemoveLater();
}

void CTemporaryCopy::LinkTo(const std::string& original, const std::string& extension) {
    const SCSignals::CHeld held;
    if (const DWORD code = Port::MakeTemporaryLink(original, extension, m_path); code != 0)
        throw CFailure(EExitStatus::OutputFailed, TemporaryFolder(),
                       original + " cannot be given another name there: " + Platform::GetErrorText(code));
    RemoveLater();
}

void CTemporaryCopy::RemoveLater() {
    m_isToRemove = true;
    SCSignals::RemoveFile(m_path.c_str());
}

void CTemporaryCopy::Fill(std::string_view head, Port::TFile source, ITextDecoder* decoder) {
    constexpr std::size_t blockSize = 65536;
    std::string block(head);
    std::string utf8;
    for (bool isLast = false; !isLast;) {
        const std::size_t kept = block.size();
        DWORD got = 0;
        block.resize(kept + blockSize);
        if (const DWORD code = Port::Read(source, &block[kept], static_cast<DWORD>(blockSize), got); code != 0)
            throw CFailure(EExitStatus::NotFound, m_name, "cannot be read: " + Platform::GetErrorText(code));
        block.resize(kept + got);
        isLast = got == 0;
        const std::size_t taken = decoder != nullptr ? decoder->DecodeBlock(block, isLast, utf8) : block.size();
        Write(decoder != nullptr ? utf8 : block);
        block.erase(0, taken);
    }
    LONGLONG start = 0;
    Port::Seek(m_file.Get(), 0, Port::EOrigin::Start, start);
}

void CTemporaryCopy::Write(std::string_view bytes) {
    DWORD put = 0;
    if (const DWORD code = Port::Write(m_file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), put); code != 0)
        FailToStore(code, std::string("; set ") + Port::GetTemporaryFolderVariable() + " to a folder with more room");
}

void CTemporaryCopy::FailToStore(DWORD code, const std::string& hint) const {
    const std::string input = m_name == "-" ? "standard input" : m_name;
    throw CFailure(EExitStatus::OutputFailed, TemporaryFolder(),
                   input + " cannot be stored there: " + Platform::GetErrorText(code) + hint);
}

} // namespace NSTQ::Tool
