// Owns the HANDLE of a file and closes it when it goes out of scope.
#pragma once

#include "platform/files/Files.h"

namespace NSTQ::Platform {

class CFileHandle {
public:
    /// `handle` is what CreateFileA gives, INVALID_HANDLE_VALUE included.
    explicit CFileHandle(HANDLE handle) : m_handle(handle) {}
    CFileHandle(const CFileHandle&) = delete;
    CFileHandle& operator=(const CFileHandle&) = delete;
    /// Keeps the last error, so that a failing path still tells what it failed with.
    ~CFileHandle() {
        const DWORD error = GetLastError();
        if (IsOpen())
            CloseHandle(m_handle);
        SetLastError(error);
    }

    bool IsOpen() const { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return m_handle; }

private:
    HANDLE m_handle;
};

} // namespace NSTQ::Platform
