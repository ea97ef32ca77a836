#include "platform/windows/System.h"

namespace NSTQ::Platform::Port {

namespace {

constexpr int maxAttempts = 100;

/// Tries `make` with names in the temporary folder until one is free.
template <class TMake>
DWORD TryNames(const std::string& extension, std::string& path, TMake make) {
    std::string folder;
    DWORD code = FindTemporaryFolder(folder);
    for (int i = 0; code == ERROR_SUCCESS && i < maxAttempts; ++i) {
        constexpr const char* digits = "0123456789abcdef";
        path = folder + "/tqc-";
        std::uint32_t number = MakeRandomNumber();
        for (int digit = 0; digit < 8; ++digit, number >>= 4)
            path += digits[number & 0x0F];
        path += extension;
        std::wstring wide;
        code = ToWidePath(path, wide);
        if (code == ERROR_SUCCESS)
            code = make(wide);
        if (code != ERROR_FILE_EXISTS)
            return code;
        code = ERROR_SUCCESS;
    }
    return code == ERROR_SUCCESS ? ERROR_FILE_EXISTS : code;
}

DWORD Create(const std::wstring& path, DWORD access, DWORD flags, SECURITY_ATTRIBUTES* rights, TFile& file) {
    file = FileOfHandle(::CreateFileW(path.c_str(), access, shareAll, rights, CREATE_NEW, flags, nullptr));
    return file == noFile ? LastCode() : ERROR_SUCCESS;
}

DWORD CreateTemporary(const std::string& extension, DWORD flags, TFile& file, std::string& path) {
    CPrivateRights rights;
    return TryNames(extension, path, [&](const std::wstring& wide) {
        return Create(wide, GENERIC_READ | GENERIC_WRITE | DELETE, FILE_ATTRIBUTE_TEMPORARY | flags, rights.Get(),
                      file);
    });
}

/// A symbolic link, which needs a right that not every user has; else a second name, which has to be on the same
/// volume, and through which a read-only file could not be discarded; else a copy.
DWORD LinkOrCopy(const std::wstring& original, const std::wstring& path) {
    // Wine reports success and makes none.
    if (::CreateSymbolicLinkW(path.c_str(), original.c_str(), SYMBOLIC_LINK_FLAG_ALLOW_UNPRIVILEGED_CREATE) &&
        ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES)
        return ERROR_SUCCESS;
    const DWORD attributes = ::GetFileAttributesW(original.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) == 0 &&
        ::CreateHardLinkW(path.c_str(), original.c_str(), nullptr))
        return ERROR_SUCCESS;
    return Result(::CopyFileW(original.c_str(), path.c_str(), TRUE));
}

/// The name is the last member, and so long as needed. At once: also while others have the target open.
DWORD Rename(HANDLE file, const std::wstring& target, FILE_INFO_BY_HANDLE_CLASS kind) {
    const std::size_t nameSize = target.size() * sizeof(wchar_t);
    std::vector<std::byte> buffer(sizeof(FILE_RENAME_INFO) + nameSize);
    auto* const information = reinterpret_cast<FILE_RENAME_INFO*>(buffer.data());
    // Newer systems take this byte and the three after it for flags: replace, and do it at once.
    information->ReplaceIfExists = kind == renameAtOnce ? 0x01 | 0x02 : TRUE;
    information->FileNameLength = static_cast<DWORD>(nameSize);
    target.copy(information->FileName, target.size());
    return Result(::SetFileInformationByHandle(file, kind, information, static_cast<DWORD>(buffer.size())));
}

} // namespace

DWORD MakeTemporaryFile(TFile& file, std::string& path, bool& isNamed) {
    // The system removes it with its last handle, whatever ends the program.
    isNamed = false;
    return CreateTemporary("", FILE_FLAG_DELETE_ON_CLOSE, file, path);
}

DWORD MakeTemporaryFile(const std::string& extension, TFile& file, std::string& path) {
    return CreateTemporary(extension, 0, file, path);
}

DWORD MakeTemporaryLink(const std::string& original, const std::string& extension, std::string& path) {
    std::wstring wideOriginal;
    if (const DWORD code = ToWidePath(original, wideOriginal); code != ERROR_SUCCESS)
        return code;
    return TryNames(extension, path, [&](const std::wstring& wide) { return LinkOrCopy(wideOriginal, wide); });
}

DWORD MakeNamelessFile(const std::string& /*target*/, TFile& /*file*/) {
    return ERROR_NOT_SUPPORTED;
}

DWORD MakeHiddenFile(const std::string& path, TFile& file) {
    std::wstring wide;
    if (const DWORD code = ToWidePath(path, wide); code != ERROR_SUCCESS)
        return code;
    // With the rights that the folder gives, because it is to keep them.
    return Create(wide, GENERIC_WRITE | DELETE, FILE_ATTRIBUTE_NORMAL, nullptr, file);
}

DWORD GiveName(TFile /*file*/, const std::string& /*path*/) {
    return ERROR_NOT_SUPPORTED;
}

void TakeOverOwner(TFile /*file*/, const std::string& /*target*/, std::uint32_t& permissions) {
    // MoveOver keeps the rights of the target.
    permissions = 0;
}

DWORD SetPermissions(TFile /*file*/, std::uint32_t /*permissions*/) {
    return ERROR_SUCCESS;
}

DWORD MoveOver(TFile file, const std::string& path, const std::string& target) {
    std::wstring from;
    std::wstring to;
    DWORD code = ToWidePath(path, from);
    if (code == ERROR_SUCCESS)
        code = ToWidePath(target, to);
    if (code != ERROR_SUCCESS)
        return code;
    // Keeps the rights, attributes and time of creation of the target, also if others have it open.
    constexpr DWORD asFarAsPossible = REPLACEFILE_IGNORE_MERGE_ERRORS;
    if (::GetFileAttributesW(to.c_str()) != INVALID_FILE_ATTRIBUTES &&
        ::ReplaceFileW(to.c_str(), from.c_str(), nullptr, asFarAsPossible, nullptr, nullptr))
        return ERROR_SUCCESS;
    if (Rename(HandleOfFile(file), to, renameAtOnce) == ERROR_SUCCESS)
        return ERROR_SUCCESS;
    return Rename(HandleOfFile(file), to, FileRenameInfo);
}

} // namespace NSTQ::Platform::Port
