#include "CFileHead.h"

#include "CFailure.h"
#include "SCDataAccessDefine.h"
#include "tqcAccess/ErrorText.h"

namespace NSTQ::Tool {
namespace {

/// Reads until the text is full or the file ends: detection must not depend on the pieces in which a pipe delivers
/// the data. Returns 0 or an error code.
DWORD Fill(std::string& text, Port::TFile file) {
    std::size_t size = 0;
    DWORD got = 1;
    while (size < text.size() && got > 0) {
        const DWORD code = Port::Read(file, text.data() + size, static_cast<DWORD>(text.size() - size), got);
        if (code != 0)
            return code;
        size += got;
    }
    text.resize(size);
    return 0;
}

[[noreturn]] void RefuseFolder(const std::string& name) {
    throw CFailure(EExitStatus::NotFound, name, "is a folder; give a file in it");
}

} // namespace

CFileHead::CFileHead(Port::TFile file, const std::string& name) {
    constexpr std::size_t sizeMax = NSTQCore::SCDataAccessDefine::READ_BUFF_SIZE;
    if (const DWORD code = Port::GetStatus(file, m_status); code != 0)
        throw CFailure(EExitStatus::NotFound, name, Platform::GetErrorText(code));
    if (m_status.kind == Port::EKind::Folder)
        RefuseFolder(name);
    m_bytes.resize(sizeMax);
    if (const DWORD code = Fill(m_bytes, file); code != 0)
        throw CFailure(EExitStatus::Unsupported, name, "cannot be read: " + Platform::GetErrorText(code));
    m_isWholeFile = m_bytes.size() < sizeMax;
}

COpenFile CFileHead::Open(const std::string& path, const std::string& name) {
    Port::TFile file = Port::noFile;
    Port::SStatus status;
    const DWORD code = Port::OpenToRead(path, false, file);
    if (code != 0 && Port::GetStatus(path, status) == 0 && status.kind == Port::EKind::Folder)
        RefuseFolder(name);
    if (code != 0)
        throw CFailure(EExitStatus::NotFound, name, Platform::GetErrorText(code));
    return COpenFile(file);
}

bool CFileHead::IsFileOf(Port::TFile other) const {
    Port::SStatus status;
    return Port::GetStatus(other, status) == 0 && status.kind == Port::EKind::Regular &&
           status.device == m_status.device && status.number == m_status.number;
}

} // namespace NSTQ::Tool
