#include "CTemporaryFile.h"

#include "CFailure.h"
#include "SCSignals.h"
#include "tqcAccess/ErrorText.h"

#include <random>
#include <string_view>

namespace NSTQ::Tool {
namespace {

/// A hidden name in the folder of the target that shows what it belongs to.
std::string MakeName(const std::string& target, std::random_device& random) {
    constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz0123456789";
    constexpr std::size_t nameRoom = 200;
    const std::size_t folder = target.find_last_of('/') + 1;
    std::string path = target.substr(0, folder) + '.' + target.substr(folder, nameRoom) + ".tqc-";
    for (int i = 0; i < 8; ++i)
        path += letters[random() % letters.size()];
    return path;
}

} // namespace

CTemporaryFile::CTemporaryFile(const std::string& target, bool isNamed) : m_target(target) {
    if (Port::TFile file = Port::noFile; !isNamed && Port::MakeNamelessFile(target, file) == 0)
        m_file.Reset(file);
    else
        CreateNamed();
    Port::TakeOverOwner(m_file.Get(), target, m_permissions);
}

void CTemporaryFile::CreateNamed() {
    const SCSignals::CHeld held;
    Check(TryNames(&CTemporaryFile::CreateAtPath), "; its folder must exist and be writable");
}

/// Calls `create` with hidden names until one is free; then registers the file with the signal handler.
DWORD CTemporaryFile::TryNames(DWORD (CTemporaryFile::*create)()) {
    constexpr int attempts = 100;
    std::random_device random;
    DWORD code = fileExists;
    for (int attempt = 0; attempt < attempts && code == fileExists; ++attempt) {
        m_path = MakeName(m_target, random);
        code = (this->*create)();
    }
    if (code == 0)
        SCSignals::RemoveFile(m_path.c_str());
    else
        m_path.clear();
    return code;
}

DWORD CTemporaryFile::CreateAtPath() {
    Port::TFile file = Port::noFile;
    const DWORD code = Port::MakeHiddenFile(m_path, file);
    if (code == 0)
        m_file.Reset(file);
    return code;
}

DWORD CTemporaryFile::LinkToPath() {
    return Port::GiveName(m_file.Get(), m_path);
}

void CTemporaryFile::Replace() {
    Check(Port::Flush(m_file.Get()));
    if (m_isPlaced)
        return;
    const SCSignals::CHeld held;
    Check(Port::SetPermissions(m_file.Get(), m_permissions));
    if (!m_path.empty() || !PlaceNameless()) {
        Check(Port::MoveOver(m_file.Get(), m_path, m_target));
        Forget();
    }
    m_isPlaced = true;
}

/// False when the target exists: the file has a hidden name then.
bool CTemporaryFile::PlaceNameless() {
    DWORD code = Port::GiveName(m_file.Get(), m_target);
    if (code == 0)
        return true;
    if (code == fileExists)
        code = TryNames(&CTemporaryFile::LinkToPath);
    Check(code);
    return false;
}

void CTemporaryFile::Forget() {
    SCSignals::ForgetFile(m_path.c_str());
    m_path.clear();
}

/// Throws CFailure unless the code is 0.
void CTemporaryFile::Check(DWORD code, const char* hint) const {
    if (code != 0)
        throw CFailure(EExitStatus::OutputFailed, m_target, Platform::GetErrorText(code) + hint);
}

CTemporaryFile::~CTemporaryFile() {
    m_file.Reset(Port::noFile);
    if (m_path.empty())
        return;
    const SCSignals::CHeld held;
    Port::Discard(m_path.c_str());
    Forget();
}

} // namespace NSTQ::Tool
