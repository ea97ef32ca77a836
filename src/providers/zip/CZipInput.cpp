#include "providers/zip/CZipInput.h"

#include "platform/files/Files.h"

#include <algorithm>

namespace NSTQ::Providers {

using namespace Platform;

CZipInput::~CZipInput() {
    if (m_hFile != nullptr)
        CloseHandle(m_hFile);
}

bool CZipInput::Open(const char* archive) {
    const HANDLE file =
        CreateFileA(archive, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    m_hFile = file;
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(file, &size))
        return false;
    m_uSize = static_cast<std::uint64_t>(size.QuadPart);
    return true;
}

bool CZipInput::ReadAt(std::uint64_t position, std::span<unsigned char> bytes) const noexcept {
    constexpr std::size_t longestRead = std::size_t{1} << 30;
    if (position > m_uSize || bytes.size() > m_uSize - position)
        return false;
    LARGE_INTEGER distance{};
    distance.QuadPart = static_cast<LONGLONG>(position);
    if (!SetFilePointerEx(m_hFile, distance, nullptr, FILE_BEGIN))
        return false;
    while (!bytes.empty()) {
        DWORD read = 0;
        const auto wanted = static_cast<DWORD>(std::min(bytes.size(), longestRead));
        if (!ReadFile(m_hFile, bytes.data(), wanted, &read, nullptr) || read == 0)
            return false;
        bytes = bytes.subspan(read);
    }
    return true;
}

} // namespace NSTQ::Providers
