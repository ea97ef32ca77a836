// What the files of this folder share: the header of the system, its strings and its error codes.
//
// The constants of errors and of files are the system's own macros here: platform/errors/LastError.h and
// platform/files/Files.h, which give them to the rest of the library, cannot be included.
#pragma once

#include "platform/Port.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#define WIN32_LEAN_AND_MEAN
// What newer systems can is declared, and tried first; nothing newer than Windows 7 is needed.
#undef _WIN32_WINNT
#define _WIN32_WINNT 0x0A00
#include <windows.h>

#include <string>
#include <string_view>

namespace NSTQ::Platform::Port {

/// What every file of the port is shared for; see Open for the exception.
inline constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Requests of SetFileInformationByHandle that the header of the compiler lacks.
inline constexpr auto dispositionAtOnce = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);
inline constexpr auto renameAtOnce = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);

inline HANDLE HandleOfFile(TFile file) {
    return reinterpret_cast<HANDLE>(file);
}

/// noFile for INVALID_HANDLE_VALUE.
inline TFile FileOfHandle(HANDLE handle) {
    return reinterpret_cast<TFile>(handle);
}

/// The code that the port gives for one of the system: where Windows has several for one reason, the usual one.
DWORD Translate(DWORD systemCode);
/// Of the system's last error.
DWORD LastCode();
/// 0, or the code of the system's last error.
DWORD Result(BOOL success);

/// Converts a path of the port for the system: absolute, with '\', and with the prefix for long paths where one is
/// needed. Trailing dots and blanks and the names of devices have the meaning that the system gives them. Returns 123
/// for a path that holds '\', a NUL, invalid UTF-8 or a colon that does not follow a drive, 206 for one that is too
/// long, and 0.
DWORD ToWidePath(const std::string& path, std::wstring& wide);
/// UTF-8 to UTF-16 and back; an invalid sequence becomes U+FFFD.
std::wstring ToWide(std::string_view text);
std::string FromWide(std::wstring_view wide);
/// As FromWide, with '/' for '\'.
std::string FromWidePath(std::wstring_view wide);

/// Closes a handle at the end of a block.
class CHandle {
public:
    explicit CHandle(HANDLE handle = INVALID_HANDLE_VALUE) : m_handle(handle) {}
    CHandle(const CHandle&) = delete;
    CHandle& operator=(const CHandle&) = delete;
    CHandle(CHandle&& other) noexcept : m_handle(other.Release()) {}
    CHandle& operator=(CHandle&& other) noexcept {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    /// Keeps the system's last error.
    ~CHandle() {
        if (!IsOpen())
            return;
        const DWORD error = ::GetLastError();
        ::CloseHandle(m_handle);
        ::SetLastError(error);
    }

    bool IsOpen() const { return m_handle != INVALID_HANDLE_VALUE && m_handle != nullptr; }
    HANDLE Get() const { return m_handle; }
    HANDLE Release() {
        HANDLE handle = m_handle;
        m_handle = INVALID_HANDLE_VALUE;
        return handle;
    }

private:
    HANDLE m_handle;
};

/// The rights of a file or folder that only this user and the system may access, also of what is made in it.
class CPrivateRights {
public:
    CPrivateRights();
    CPrivateRights(const CPrivateRights&) = delete;
    CPrivateRights& operator=(const CPrivateRights&) = delete;
    ~CPrivateRights();

    /// For the functions that create. Null if the system does not tell who the user is: the rights are then those
    /// that the folder gives.
    SECURITY_ATTRIBUTES* Get() { return m_attributes.lpSecurityDescriptor != nullptr ? &m_attributes : nullptr; }

private:
    SECURITY_ATTRIBUTES m_attributes{sizeof(SECURITY_ATTRIBUTES), nullptr, FALSE};
};

/// The user's security identifier as text ("S-1-5-..."); empty if the system does not tell it.
std::wstring GetUserIdentifier();

} // namespace NSTQ::Platform::Port
