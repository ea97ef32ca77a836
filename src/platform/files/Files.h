// The operating system's files under their Windows names, over POSIX.
//
// Paths are texts in the ANSI code page. They are turned into UTF-8 first and only then are '\' and '/' both taken as
// separators, because 0x5C is also a trail byte of Shift_JIS. With code page 65001 the bytes go through unchanged.
// A name of the system that the page or the two separators cannot carry, such as one in TMPDIR, is given with
// escapes: 0x01 and two hexadecimal digits (upper case) for each byte of its UTF-8 form that cannot stand. Those for
// '\', 0x01 and bytes from 0x80 on are taken back last, so that an escaped '\' is part of a name; any other gives
// 123, so that none can stand for a separator or "..". A path may have any length that the system takes. Every call
// with a path fails with 3 when it is null, empty or leads through a missing folder, 123 when the code page does not
// have its characters, 111 when a name or the path is too long for the system and 206 when it is longer than any path
// of the system could be.
//
// Errors are Windows error codes, kept per thread and read with GetLastError; calls interrupted by a signal are made
// again. A call that succeeds leaves the code as it is or unspecified, except where it says otherwise. A failing call
// leaves nothing open. Overlapped and template arguments and security attributes must be null (87).
//
// Descriptors are closed when another program is executed and never take the numbers of the standard streams.
// Different handles may be used from different threads at the same time.
#pragma once

#include "platform/errors/LastError.h"
#include "tqcAccess/Types.h"

#if defined(_WIN32)
#include <windows.h>
#else

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

/// Opens a file (OPEN_EXISTING), creates a new one (CREATE_NEW; 80 when there is one already, be it a link) or
/// replaces what is there (CREATE_ALWAYS; on success GetLastError gives 183 when there was a file, else 0).
/// `access` is GENERIC_READ, GENERIC_WRITE or both; `flags` may have FILE_FLAG_SEQUENTIAL_SCAN and
/// FILE_ATTRIBUTE_NORMAL. Anything else gives 87.
///
/// Sharing is kept with an advisory lock on regular files that all openers through this layer respect, also those of
/// one process, on file systems that have such locks: share mode 0 excludes every other opener and is refused while
/// there is one (32); any other share mode excludes only openers with share mode 0. Nothing is truncated before the
/// lock is held. Programs that do not go through this layer are kept out only as far as they ask for flock locks
/// themselves. Deleting takes no notice of the lock.
///
/// Reading takes regular files only: a folder gives 5, a pipe or a device 50, because sizes and rewinding need a
/// file. Writing follows links and takes devices and pipes too (a named pipe makes the call wait for its reader); a
/// folder and an existing file without any write permission bit give 5, whoever asks. For writing alone
/// "/dev/stdout", "/dev/stderr" and "/dev/fd/N" mean the descriptor that is open already: it is used from where it
/// stands, is neither locked nor truncated, and stays open when the handle is closed; 6 when it is not open, 5 when
/// it is open for reading only.
///
/// Returns INVALID_HANDLE_VALUE on failure. A handle comes from here and is closed with CloseHandle.
HANDLE CreateFileA(const char* path, DWORD access, DWORD share, const void* securityAttributes, DWORD disposition,
                   DWORD flags, HANDLE templateFile);

/// A handle to what a descriptor of the host has open, from where it stands, such as standard input or a pipe. It is
/// closed with CloseHandle; the host's descriptor stays open. INVALID_HANDLE_VALUE with 6 when that is not open.
HANDLE DuplicateDescriptor(int descriptor);

/// Reads up to `size` bytes at the file pointer. `*read` is 0 on failure and at the end of the file; it is below
/// `size` whenever the system delivers less, as on Windows. An empty pipe is waited for, also a non-blocking one.
bool ReadFile(HANDLE file, void* buffer, DWORD size, DWORD* read, void* overlapped);

/// As ReadFile, but asks again until all is there or the file ends: for decisions that must not depend on how much
/// the system delivers at once. On failure `*read` tells how many bytes had come before.
bool ReadFileWhole(HANDLE file, void* buffer, DWORD size, DWORD* read);

/// Writes all `size` bytes or fails; `*written` tells how many were written before a failure. A full pipe is waited
/// for, also a non-blocking one. A closed pipe gives 109 in a host that ignores SIGPIPE; in any other the signal acts
/// as the host has it, because signals are the host's.
bool WriteFile(HANDLE file, const void* buffer, DWORD size, DWORD* written, void* overlapped);

/// Moves the file pointer by `distance` bytes from the start, the current position or the end. `position` (may be
/// null) receives where it is then. A position before the start gives 87, a pipe 1.
bool SetFilePointerEx(HANDLE file, LARGE_INTEGER distance, LARGE_INTEGER* position, DWORD method);
/// The size in bytes; anything but a regular file gives 1.
bool GetFileSizeEx(HANDLE file, LARGE_INTEGER* size);
/// Closes the file and gives its lock back. A failure (the system could not store what was written before) closes it
/// as well.
bool CloseHandle(HANDLE file);

/// Deletes a file or a link (not what it points to), open or not. A folder and a file without any write permission
/// bit, which is what read-only means here, give 5.
bool DeleteFileA(const char* path);

} // namespace NSTQ::Platform
#endif
