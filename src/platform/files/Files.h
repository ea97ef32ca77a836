// The file functions of Windows, implemented over the port (platform/Port.h).
//
// Paths are texts in the ANSI code page. They are converted to UTF-8 first, and only then both '\' and '/' are
// separators, because 0x5C is also a trail byte of Shift_JIS. With code page 65001 the bytes are not changed. A name
// of the system that the page or the two separators cannot represent, such as one in TMPDIR, contains escapes: 0x01
// and two hexadecimal digits (upper case) for each such byte of its UTF-8 form. Escapes of '\', 0x01 and bytes from
// 0x80 are decoded last, so that an escaped '\' is part of a name; any other escape gives 123, so that none can
// represent a separator or "..". A path may have any length that the system accepts. Every call with a path fails
// with 3 when it is null, empty or contains a missing folder, 123 when it has bytes that are invalid in the code
// page, 111 when a name or the path is too long for the system, and 206 when it is longer than any path of the
// system.
//
// Errors are Windows error codes, stored per thread and read with GetLastError; calls interrupted by a signal are
// repeated. After success the code is unspecified, unless stated otherwise. A failing call leaves nothing open.
// Overlapped and template arguments and security attributes must be null (87).
//
// Descriptors are closed when another program is executed and never have the numbers of the standard streams.
// Different handles may be used from different threads at the same time.
#pragma once

#include "platform/errors/LastError.h"
#include "tqcAccess/Types.h"

namespace NSTQ::Platform {

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;
inline constexpr DWORD CREATE_NEW = 1;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD FILE_FLAG_SEQUENTIAL_SCAN = 0x08000000;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;
inline constexpr DWORD MAX_PATH = 260;

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(~std::uintptr_t{0});

union LARGE_INTEGER {
    LONGLONG QuadPart;
};

/// Opens a file (OPEN_EXISTING), creates a new one (CREATE_NEW; 80 when the path exists, also as a link) or
/// replaces it (CREATE_ALWAYS; on success GetLastError returns 183 if there was a file, else 0).
/// `access` is GENERIC_READ, GENERIC_WRITE or both; `flags` may have FILE_FLAG_SEQUENTIAL_SCAN and
/// FILE_ATTRIBUTE_NORMAL. Other values give 87.
///
/// Sharing uses an advisory lock on regular files that all openers through this layer respect, also those of one
/// process, on file systems that have such locks: share mode 0 excludes every other opener and fails while there is
/// one (32); any other share mode excludes only openers with share mode 0. Nothing is truncated before the lock is
/// held. Other programs are excluded only if they use flock locks themselves.
/// Deleting ignores the lock.
///
/// Only regular files can be read: a folder gives 5, a pipe or a device 50, because sizes and rewinding need a file.
/// Writing follows links and also accepts devices and pipes (for a named pipe the call waits for its reader); a
/// folder and an existing file without any write permission bit give 5, for every user. For write access only,
/// "/dev/stdout", "/dev/stderr" and "/dev/fd/N" mean the descriptor that is already open: it is used from its current
/// position, is neither locked nor truncated, and stays open when the handle is closed; 6 when it is not open, 5 when
/// it is open only for reading.
///
/// Returns INVALID_HANDLE_VALUE on failure. A handle comes from here and is closed with CloseHandle.
HANDLE CreateFileA(const char* path, DWORD access, DWORD share, const void* securityAttributes, DWORD disposition,
                   DWORD flags, HANDLE templateFile);

/// A handle for a descriptor of the host, such as standard input or a pipe, from its current position. It is closed
/// with CloseHandle; the host's descriptor stays open. INVALID_HANDLE_VALUE with 6 when that is not open.
HANDLE DuplicateDescriptor(int descriptor);

/// Reads up to `size` bytes at the file pointer. `*read` is 0 on failure and at the end of the file; it is below
/// `size` whenever the system returns less, as on Windows. Waits for an empty pipe, also a non-blocking one.
bool ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read, void* overlapped);

/// As ReadFile, but repeats until all bytes are read or the file ends: for decisions that must not depend on how much
/// the system returns at once. On failure `*read` is the number of bytes read before.
bool ReadFileWhole(HANDLE file, void* buffer, DWORD size, DWORD* read);

/// Writes all `size` bytes or fails; `*written` is the number of bytes written before a failure. Waits for a full
/// pipe, also a non-blocking one. A closed pipe gives 109 in a host that ignores SIGPIPE; in any other the signal has
/// its effect, because signals are the responsibility of the host.
bool WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* written, void* overlapped);

/// Moves the file pointer by `distance` bytes from the start, the current position or the end. `position` (may be
/// null) receives the new position. A position before the start gives 87, a pipe 1.
bool SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position, DWORD method);
/// The size in bytes; anything but a regular file gives 1.
bool GetFileSizeEx(HANDLE file, LARGE_INTEGER* size);
/// Closes the file and releases its lock. A failure (the system could not store what was written before) closes it
/// as well.
bool CloseHandle(HANDLE file);

/// Deletes a file or a link (not what it points to), open or not. A folder and a file without any write permission
/// bit, which counts as read-only, give 5.
bool DeleteFileA(const char* path);

} // namespace NSTQ::Platform
