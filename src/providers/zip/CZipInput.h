// The bytes of an archive on disk, read at any place.
#pragma once

#include "platform/Types.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace NSTQ::Providers {

class CZipInput {
public:
    CZipInput() = default;
    CZipInput(const CZipInput&) = delete;
    CZipInput& operator=(const CZipInput&) = delete;
    ~CZipInput();

    /// Opens the archive (path in the ANSI code page). False on failure, with the cause in GetLastError.
    bool Open(const char* archive);
    /// In bytes, as it was when the archive was opened.
    std::uint64_t Size() const { return m_uSize; }
    /// Fills all of `bytes` from `position` on. False on failure and when the archive ends before.
    bool ReadAt(std::uint64_t position, std::span<unsigned char> bytes) const noexcept;

private:
    HANDLE m_hFile = nullptr;
    std::uint64_t m_uSize = 0;
};

} // namespace NSTQ::Providers
