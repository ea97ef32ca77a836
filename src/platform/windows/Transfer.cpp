#include "platform/windows/System.h"

#include <algorithm>
#include <array>

namespace NSTQ::Platform::Port {

namespace {

/// What reading returns at the end of a file, and of a pipe whose writer has closed it.
DWORD CountRead(BOOL success, DWORD& got) {
    const DWORD code = success ? ERROR_SUCCESS : ::GetLastError();
    if (code == ERROR_SUCCESS)
        return code;
    got = 0;
    return code == ERROR_HANDLE_EOF || code == ERROR_BROKEN_PIPE ? ERROR_SUCCESS : Translate(code);
}

bool IsConsole(HANDLE file) {
    DWORD mode = 0;
    return ::GetFileType(file) == FILE_TYPE_CHAR && ::GetConsoleMode(file, &mode);
}

/// What is typed, in UTF-8: the bytes that the system itself would give are those of another code page. Ctrl-Z at the
/// beginning of a line ends it.
DWORD ReadConsole(HANDLE console, void* buffer, DWORD size, DWORD& got) {
    constexpr DWORD maxBytesPerUnit = 3;
    constexpr wchar_t endOfInput = 0x1A;
    std::array<wchar_t, 4096> units;
    // Room for one more, so that both halves of a surrogate pair are read together.
    const DWORD wanted = std::min<DWORD>(size / maxBytesPerUnit, static_cast<DWORD>(units.size())) - 1;
    DWORD count = 0;
    got = 0;
    if (size < 2 * maxBytesPerUnit)
        return ERROR_INSUFFICIENT_BUFFER;
    if (!::ReadConsoleW(console, units.data(), wanted, &count, nullptr))
        return LastCode();
    DWORD more = 0;
    if (count > 0 && IS_HIGH_SURROGATE(units[count - 1]) && ::ReadConsoleW(console, &units[count], 1, &more, nullptr))
        count += more;
    if (count == 0 || units[0] == endOfInput)
        return ERROR_SUCCESS;
    got = static_cast<DWORD>(::WideCharToMultiByte(CP_UTF8, 0, units.data(), static_cast<int>(count),
                                                   static_cast<char*>(buffer), static_cast<int>(size), nullptr,
                                                   nullptr));
    return ERROR_SUCCESS;
}

} // namespace

DWORD Read(TFile file, void* buffer, DWORD size, DWORD& got) {
    HANDLE handle = HandleOfFile(file);
    got = 0;
    if (file == noFile)
        return ERROR_INVALID_HANDLE;
    if (IsConsole(handle))
        return ReadConsole(handle, buffer, size, got);
    return CountRead(::ReadFile(handle, buffer, size, &got, nullptr), got);
}

DWORD ReadAt(TFile file, LONGLONG offset, void* buffer, DWORD size, DWORD& got) {
    got = 0;
    if (file == noFile)
        return ERROR_INVALID_HANDLE;
    OVERLAPPED place{};
    place.Offset = static_cast<DWORD>(offset);
    place.OffsetHigh = static_cast<DWORD>(offset >> 32);
    return CountRead(::ReadFile(HandleOfFile(file), buffer, size, &got, &place), got);
}

DWORD Write(TFile file, const void* buffer, DWORD size, DWORD& written) {
    written = 0;
    if (file == noFile)
        return ERROR_INVALID_HANDLE;
    while (written < size) {
        DWORD put = 0;
        if (!::WriteFile(HandleOfFile(file), static_cast<const char*>(buffer) + written, size - written, &put,
                         nullptr))
            return LastCode();
        // A device that accepts nothing and reports no error would cause an endless loop.
        if (put == 0)
            return ERROR_DISK_FULL;
        written += put;
    }
    return ERROR_SUCCESS;
}

DWORD Seek(TFile file, LONGLONG distance, EOrigin origin, LONGLONG& position) {
    constexpr DWORD origins[] = {FILE_BEGIN, FILE_CURRENT, FILE_END};
    if (file == noFile)
        return ERROR_INVALID_HANDLE;
    if (::GetFileType(HandleOfFile(file)) != FILE_TYPE_DISK)
        return ::GetLastError() == ERROR_INVALID_HANDLE ? ERROR_INVALID_HANDLE : ERROR_INVALID_FUNCTION;
    LARGE_INTEGER wanted{};
    LARGE_INTEGER reached{};
    wanted.QuadPart = distance;
    const BOOL success =
        ::SetFilePointerEx(HandleOfFile(file), wanted, &reached, origins[static_cast<std::size_t>(origin)]);
    position = reached.QuadPart;
    return Result(success);
}

DWORD Flush(TFile file) {
    if (file == noFile)
        return ERROR_INVALID_HANDLE;
    // For a pipe the call would wait for its reader.
    return ::GetFileType(HandleOfFile(file)) != FILE_TYPE_DISK ? ERROR_SUCCESS
                                                               : Result(::FlushFileBuffers(HandleOfFile(file)));
}

DWORD Close(TFile file) {
    return file == noFile ? ERROR_INVALID_HANDLE : Result(::CloseHandle(HandleOfFile(file)));
}

} // namespace NSTQ::Platform::Port
