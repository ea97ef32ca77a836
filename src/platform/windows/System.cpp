#include "platform/windows/System.h"

#include <algorithm>

namespace NSTQ::Platform::Port {

namespace {

constexpr std::size_t maxComponentLength = 255;
constexpr std::size_t maxPathLength = 32767;
/// A folder must have room for a short file name, so its own limit is lower than MAX_PATH.
constexpr std::size_t longPathLength = MAX_PATH - 12;

struct STranslation {
    DWORD from;
    DWORD to;
};
constexpr STranslation translations[] = {
    {ERROR_HANDLE_DISK_FULL, ERROR_DISK_FULL},   {ERROR_NO_DATA, ERROR_BROKEN_PIPE},
    {ERROR_DIRECTORY, ERROR_PATH_NOT_FOUND},     {ERROR_DELETE_PENDING, ERROR_ACCESS_DENIED},
    {ERROR_ALREADY_EXISTS, ERROR_FILE_EXISTS},   {ERROR_NEGATIVE_SEEK, ERROR_INVALID_PARAMETER},
    {ERROR_BAD_PATHNAME, ERROR_PATH_NOT_FOUND},  {ERROR_BAD_NETPATH, ERROR_PATH_NOT_FOUND},
    {ERROR_BAD_NET_NAME, ERROR_PATH_NOT_FOUND},  {ERROR_PIPE_NOT_CONNECTED, ERROR_BROKEN_PIPE},
    {ERROR_OUTOFMEMORY, ERROR_NOT_ENOUGH_MEMORY}};

bool IsDrive(std::wstring_view path) {
    return path.size() >= 2 && path[1] == L':' && ((path[0] | 0x20) >= L'a' && (path[0] | 0x20) <= L'z');
}

/// The code for a path that the system would take for something else, or refuse with a code that says little.
DWORD CheckPath(std::wstring_view path) {
    if (path.find(L':', IsDrive(path) ? 2 : 0) != std::wstring_view::npos)
        return ERROR_INVALID_NAME;
    for (std::size_t from = 0; from < path.size();) {
        const std::size_t end = std::min(path.find(L'\\', from), path.size());
        if (end - from > maxComponentLength)
            return ERROR_FILENAME_EXCED_RANGE;
        from = end + 1;
    }
    return ERROR_SUCCESS;
}

DWORD MakeAbsolute(std::wstring& path) {
    std::wstring full(path.size() + MAX_PATH, L'\0');
    DWORD length = ::GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    if (length >= full.size()) {
        full.resize(length);
        length = ::GetFullPathNameW(path.c_str(), length, full.data(), nullptr);
    }
    if (length == 0 || length >= full.size())
        return length == 0 ? LastCode() : ERROR_FILENAME_EXCED_RANGE;
    full.resize(length);
    path = std::move(full);
    return ERROR_SUCCESS;
}

} // namespace

DWORD Translate(DWORD systemCode) {
    const auto* const found = std::find_if(std::begin(translations), std::end(translations),
                                           [&](const STranslation& entry) { return entry.from == systemCode; });
    return found == std::end(translations) ? systemCode : found->to;
}

DWORD LastCode() {
    return Translate(::GetLastError());
}

DWORD Result(BOOL success) {
    return success ? ERROR_SUCCESS : LastCode();
}

std::wstring ToWide(std::string_view text) {
    const int length = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');
    if (length > 0)
        wide.resize(
            static_cast<std::size_t>(::MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), length)));
    return wide;
}

std::string FromWide(std::wstring_view wide) {
    constexpr std::size_t maxBytesPerUnit = 3;
    std::string text(wide.size() * maxBytesPerUnit, '\0');
    if (!wide.empty())
        text.resize(static_cast<std::size_t>(::WideCharToMultiByte(CP_UTF8, 0, wide.data(),
                                                                   static_cast<int>(wide.size()), text.data(),
                                                                   static_cast<int>(text.size()), nullptr, nullptr)));
    return text;
}

std::string FromWidePath(std::wstring_view wide) {
    std::string path = FromWide(wide);
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

DWORD ToWidePath(const std::string& path, std::wstring& wide) {
    using namespace std::string_view_literals;
    if (path.find_first_of("\\\0"sv) != std::string::npos)
        return ERROR_INVALID_NAME;
    if (path.size() > GetMaxPathLength())
        return ERROR_FILENAME_EXCED_RANGE;
    const int length = static_cast<int>(path.size());
    wide.resize(path.size());
    const int units = ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path.data(), length, wide.data(), length);
    if (units <= 0)
        return ERROR_INVALID_NAME;
    wide.resize(static_cast<std::size_t>(units));
    std::replace(wide.begin(), wide.end(), L'/', L'\\');
    // Given in the system's own form: not to be changed.
    if (wide.starts_with(L"\\\\?\\") || wide.starts_with(L"\\\\.\\"))
        return ERROR_SUCCESS;
    DWORD code = CheckPath(wide);
    if (code == ERROR_SUCCESS)
        code = MakeAbsolute(wide);
    if (code != ERROR_SUCCESS || wide.size() < longPathLength || wide.starts_with(L"\\\\.\\"))
        return code;
    wide = wide.starts_with(L"\\\\") ? L"\\\\?\\UNC" + wide.substr(1) : L"\\\\?\\" + wide;
    return wide.size() < maxPathLength ? ERROR_SUCCESS : ERROR_FILENAME_EXCED_RANGE;
}

} // namespace NSTQ::Platform::Port
