#include "providers/common/CFileAccess.h"

#include "providers/common/CSourceError.h"

#include <algorithm>

namespace NSTQ::Providers {

using namespace Platform;

namespace {

[[noreturn]] void ThrowLastError(const char* what) {
    throw CSourceError(std::string(what) + " (error " + std::to_string(GetLastError()) + ")");
}

} // namespace

CFileAccess::CFileAccess(const std::string& path)
    : m_file(CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                         nullptr)) {
    if (!m_file.IsOpen())
        ThrowLastError("the file cannot be opened");
    LARGE_INTEGER size = {};
    if (!GetFileSizeEx(m_file.Get(), &size))
        ThrowLastError("the file has no size");
    m_size = static_cast<std::uint64_t>(size.QuadPart);
}

void CFileAccess::ReadAt(std::uint64_t offset, std::span<unsigned char> target) {
    if (offset > m_size || target.size() > m_size - offset)
        throw CSourceError("the file ends too early");
    LARGE_INTEGER distance = {};
    distance.QuadPart = static_cast<LONGLONG>(offset);
    if (!SetFilePointerEx(m_file.Get(), distance, nullptr, FILE_BEGIN))
        ThrowLastError("the file cannot be read");
    while (!target.empty()) {
        DWORD read = 0;
        const auto wanted = static_cast<DWORD>(std::min<std::size_t>(target.size(), 1U << 30));
        if (!ReadFile(m_file.Get(), target.data(), wanted, &read, nullptr))
            ThrowLastError("the file cannot be read");
        if (read == 0)
            throw CSourceError("the file has become shorter while it was read");
        target = target.subspan(read);
    }
}

} // namespace NSTQ::Providers
