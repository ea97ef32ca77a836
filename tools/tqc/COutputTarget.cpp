#include "COutputTarget.h"

#include "CFailure.h"
#include "tqcAccess/ErrorText.h"

#include <charconv>
#include <optional>
#include <string_view>

namespace NSTQ::Tool {
namespace {

constexpr std::string_view openFiles = "/dev/fd/";

/// The number of an open file in names such as /dev/fd/3.
std::optional<int> NumberOfName(std::string_view name) {
    if (name.empty() || name == "/dev/stdout")
        return Port::NumberOf(Port::GetStandardStream(Port::EStream::Output));
    if (name == "/dev/stderr")
        return Port::NumberOf(Port::GetStandardStream(Port::EStream::Error));
    int number = -1;
    if (!name.starts_with(openFiles))
        return std::nullopt;
    const auto [end, error] = std::from_chars(name.data() + openFiles.size(), name.data() + name.size(), number);
    return error == std::errc{} && end == name.data() + name.size() && number >= 0 ? std::optional(number)
                                                                                   : std::nullopt;
}

/// Replacing a file needs no write permission for it, but the protection is respected nevertheless.
void CheckReplaceable(const std::string& path, const Port::SStatus& status) {
    if (status.kind == Port::EKind::Folder)
        throw CFailure(EExitStatus::OutputFailed, path, "is a folder; give the name of a file in it");
    if (status.isReadOnly || Port::CheckAccess(path, Port::EAccess::Write) != 0)
        throw CFailure(EExitStatus::OutputFailed, path, "the file exists and is not writable; try another name");
}

} // namespace

bool COutputTarget::IsStandardOutputName(const std::string& name) {
    return name.empty() || name == "-" || name == "/dev/stdout";
}

std::string COutputTarget::FollowLinks(std::string path) {
    constexpr int linksMax = 40;
    std::string next;
    bool isPlanted = false;
    for (int i = 0; i < linksMax; ++i) {
        if (!Port::ReadLink(path, next, isPlanted))
            return path;
        if (isPlanted)
            throw CFailure(
                EExitStatus::OutputFailed, path,
                "a link that belongs to another user, in a folder that everybody can write to; give the file itself");
        path = next;
    }
    throw CFailure(EExitStatus::OutputFailed, path, "too many links, one after the other");
}

COutputTarget::COutputTarget(const std::string& name, EUse use) : m_name(IsStandardOutputName(name) ? "" : name) {
    if (const auto number = NumberOfName(m_name)) {
        CheckUse(use);
        Port::TFile file = Port::noFile;
        Check(Port::Duplicate(*number, Port::EAccess::Write, file));
        m_opened.Reset(file);
        return;
    }
    Open(FollowLinks(m_name), use);
}

/// Of what is not a file.
void COutputTarget::CheckUse(EUse use) const {
    if (use == EUse::ByPath)
        throw CFailure(EExitStatus::Usage, Describe(),
                       "a database needs a file, which this is not; give its name: -o NAME.sqlite");
}

void COutputTarget::Open(const std::string& path, EUse use) {
    Port::SStatus status;
    const bool exists = Port::GetStatus(path, status) == 0;
    if (exists && (status.kind == Port::EKind::Device || status.kind == Port::EKind::Pipe)) {
        CheckUse(use);
        Port::TFile file = Port::noFile;
        Check(Port::OpenDevice(path, file));
        m_opened.Reset(file);
        return;
    }
    if (exists)
        CheckReplaceable(path, status);
    m_temporary = std::make_unique<CTemporaryFile>(path, use == EUse::ByPath);
}

/// Throws CFailure unless the code is 0.
void COutputTarget::Check(DWORD code) const {
    if (code != 0)
        throw CFailure(EExitStatus::OutputFailed, Describe(), Platform::GetErrorText(code));
}

std::string COutputTarget::OpenPath() const {
    return std::string(openFiles) + std::to_string(Port::NumberOf(File()));
}

std::string COutputTarget::Describe() const {
    return IsStandardOutput() ? "standard output" : m_name;
}

bool COutputTarget::Write(const char* bytes, std::size_t size) {
    DWORD written = 0;
    const DWORD code = Port::Write(File(), bytes, static_cast<DWORD>(size), written);
    if (code == brokenPipe)
        return false;
    Check(code);
    return true;
}

void COutputTarget::Replace() {
    if (m_temporary)
        m_temporary->Replace();
}

} // namespace NSTQ::Tool
