#include "platform/windows/System.h"

#include <winternl.h>

namespace NSTQ::Platform::Port {

namespace {

/// Of the numbers that Duplicate takes; the values of handles are multiples of four.
constexpr DWORD standardStreams[] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};

bool Reads(const SOpening& opening) {
    return opening.access != EAccess::Write;
}

bool Writes(const SOpening& opening) {
    return opening.access != EAccess::Read;
}

/// An existing file is emptied later, when it has turned out to be one that may be.
DWORD DispositionOf(const SOpening& opening) {
    return opening.disposition == EDisposition::CreateNew      ? CREATE_NEW
           : opening.disposition == EDisposition::OpenExisting ? OPEN_EXISTING
                                                               : OPEN_ALWAYS;
}

DWORD Prepare(HANDLE file, const SOpening& opening, bool existed) {
    if (::GetFileType(file) != FILE_TYPE_DISK)
        return Reads(opening) ? ERROR_NOT_SUPPORTED : ERROR_SUCCESS;
    if (opening.disposition != EDisposition::CreateAlways || !existed)
        return ERROR_SUCCESS;
    // At the start, where a new handle is.
    return Result(::SetEndOfFile(file));
}

DWORD OpenAs(const std::string& path, DWORD access, DWORD flags, TFile& file) {
    std::wstring wide;
    if (const DWORD code = ToWidePath(path, wide); code != ERROR_SUCCESS)
        return code;
    file = FileOfHandle(::CreateFileW(wide.c_str(), access, shareAll, nullptr, OPEN_EXISTING, flags, nullptr));
    return file == noFile ? LastCode() : ERROR_SUCCESS;
}

bool MayWrite(HANDLE handle) {
    PUBLIC_OBJECT_BASIC_INFORMATION information{};
    return ::NtQueryObject(handle, ObjectBasicInformation, &information, sizeof information, nullptr) < 0 ||
           (information.GrantedAccess & (FILE_WRITE_DATA | FILE_APPEND_DATA)) != 0;
}

} // namespace

DWORD Open(const std::string& path, const SOpening& opening, TFile& file, bool& existed) {
    std::wstring wide;
    if (const DWORD code = ToWidePath(path, wide); code != ERROR_SUCCESS)
        return code;
    const DWORD access = (Reads(opening) ? GENERIC_READ : 0) | (Writes(opening) ? GENERIC_WRITE : 0) |
                         (opening.disposition == EDisposition::CreateAlways ? GENERIC_WRITE : 0);
    const DWORD share = opening.share == EShare::Exclusive ? FILE_SHARE_DELETE : shareAll;
    const DWORD flags = FILE_ATTRIBUTE_NORMAL | (opening.isSequential ? FILE_FLAG_SEQUENTIAL_SCAN : 0);
    ::SetLastError(ERROR_SUCCESS);
    CHandle opened(::CreateFileW(wide.c_str(), access, share, nullptr, DispositionOf(opening), flags, nullptr));
    if (!opened.IsOpen())
        return LastCode();
    existed = opening.disposition == EDisposition::OpenExisting ||
              (opening.disposition == EDisposition::CreateAlways && ::GetLastError() == ERROR_ALREADY_EXISTS);
    if (const DWORD code = Prepare(opened.Get(), opening, existed); code != ERROR_SUCCESS)
        return code;
    file = FileOfHandle(opened.Release());
    return ERROR_SUCCESS;
}

DWORD OpenToRead(const std::string& path, bool /*mayWait*/, TFile& file) {
    return OpenAs(path, GENERIC_READ, FILE_ATTRIBUTE_NORMAL, file);
}

DWORD OpenDevice(const std::string& path, TFile& file) {
    return OpenAs(path, GENERIC_WRITE, FILE_ATTRIBUTE_NORMAL, file);
}

DWORD Duplicate(int number, EAccess access, TFile& copy) {
    if (number < 0)
        return ERROR_INVALID_HANDLE;
    HANDLE original = static_cast<std::size_t>(number) < std::size(standardStreams)
                          ? HandleOfFile(GetStandardStream(static_cast<EStream>(number)))
                          : HandleOfFile(number);
    HANDLE duplicate = nullptr;
    HANDLE process = ::GetCurrentProcess();
    if (original == INVALID_HANDLE_VALUE ||
        !::DuplicateHandle(process, original, process, &duplicate, 0, FALSE, DUPLICATE_SAME_ACCESS))
        return ERROR_INVALID_HANDLE;
    CHandle owned(duplicate);
    if (access != EAccess::Read && !MayWrite(duplicate))
        return ERROR_ACCESS_DENIED;
    copy = FileOfHandle(owned.Release());
    return ERROR_SUCCESS;
}

int NumberOf(TFile file) {
    // Handles have 32 significant bits.
    return static_cast<int>(file);
}

TFile GetStandardStream(EStream stream) {
    HANDLE handle = ::GetStdHandle(standardStreams[static_cast<std::size_t>(stream)]);
    return handle == nullptr ? noFile : FileOfHandle(handle);
}

} // namespace NSTQ::Platform::Port
