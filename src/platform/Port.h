// The port: what an operating system must give, specified once. src/platform/posix gives it for Linux,
// src/platform/windows for Windows; nothing above those folders calls the system.
//
// Paths are system paths: UTF-8, with '/' between names, and never empty. On POSIX they are the bytes that the system
// gets. On Windows they are converted to wide strings with '\'; "C:/a", "//server/share/a" and "//?/C:/a" are
// absolute there, and a path may be longer than MAX_PATH. Paths that the port returns have the same form.
//
// Most functions return a Windows error code as a DWORD: 0 (ERROR_SUCCESS), or the reason of the failure, after which
// nothing is left open and what they return by reference is unspecified unless stated otherwise. A missing path gives
// 2 if only its last component is missing, and 3 if its folder is missing or is no folder. Calls that a signal
// interrupts are repeated. Functions may throw std::bad_alloc if they take or return a std::string; no other
// exception. Except where noted they may be called from every thread at the same time, for different files.
//
// The header includes nothing of the system, and none of its names is a macro of <windows.h>: a unit that gives the
// port may include both, in either order.
#pragma once

#include "tqcAccess/Types.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace NSTQ::Platform::Port {

// --- Open files ---

/// An open file or folder: a descriptor on POSIX, the value of a HANDLE on Windows. Negative for none, which every
/// function rejects with 6. Files are closed when another program is executed (not inherited on Windows), and never
/// have the numbers of the standard streams.
using TFile = std::intptr_t;
inline constexpr TFile noFile = -1;

enum class EAccess { Read, Write, ReadAndWrite };
enum class EShare { Exclusive, Shared };
enum class EDisposition {
    CreateNew,    ///< 80 if the path exists, also as a link
    CreateAlways, ///< an existing file is emptied
    OpenExisting
};
enum class EOrigin { Start, Current, End };
enum class EStream : int { Input, Output, Error };

struct SOpening {
    EAccess access = EAccess::Read;
    EShare share = EShare::Shared;
    EDisposition disposition = EDisposition::OpenExisting;
    bool isSequential = false; ///< a hint: the file is read or written from its start to its end
};

/// Opens a file. `existed` tells, after success, whether there was one.
///
/// An exclusive opening excludes all other openings by this function, also of the same process, and fails with 32
/// while there is one; a shared opening fails with 32 while there is an exclusive one. Nothing is emptied before that
/// is decided. On POSIX this is an advisory lock, on file systems that have one; on Windows Shared means that others
/// may read and write (as a database that is open elsewhere needs it) and Exclusive that nobody else may open it, by
/// whatever function. Either way an open file can be deleted or renamed (FILE_SHARE_DELETE on Windows).
///
/// Only regular files can be read: a folder gives 5, a pipe or device 50, without waiting for it. Writing follows
/// links and accepts pipes and devices, and waits for the reader of a pipe; a folder and an existing read-only file
/// give 5, for every user. On Windows the reserved device names are devices.
DWORD Open(const std::string& path, const SOpening& opening, TFile& file, bool& existed);

/// Opens a file of any kind for reading, in agreement with every other opening and without excluding one; `mayWait`
/// tells whether to wait for the writer of a pipe. A folder may be opened or give 5.
DWORD OpenToRead(const std::string& path, bool mayWait, TFile& file);

/// Opens an existing pipe or device for writing; waits for the reader of a pipe. 5 for a pipe in a folder that
/// everybody can write to that belongs to another user.
DWORD OpenDevice(const std::string& path, TFile& file);

/// A file of its own for what is open already under a number, from its current position: on POSIX a descriptor; on
/// Windows 0, 1 and 2 are the standard streams and other numbers the values of handles. 6 if it is not open, 5 if it
/// is to be written but can only be read. The number stays open when the copy is closed.
DWORD Duplicate(int number, EAccess access, TFile& copy);
/// The number by which Duplicate, also that of another copy of the port in this process, knows an open file.
int NumberOf(TFile file);
/// The file of a standard stream, which nobody closes; noFile if there is none (Windows only).
TFile GetStandardStream(EStream stream);

/// Reads up to `size` bytes at the file pointer. `got` is 0 on failure and at the end of the file, which the closed
/// writer of a pipe is as well; it may be below `size` before the end. Waits for an empty pipe, also a non-blocking
/// one.
DWORD Read(TFile file, void* buffer, DWORD size, DWORD& got);
/// As Read, at `offset` of a regular file. Afterwards the file pointer is unspecified on Windows and unchanged on
/// POSIX.
DWORD ReadAt(TFile file, LONGLONG offset, void* buffer, DWORD size, DWORD& got);
/// Writes all bytes or fails; `written` is the number of bytes written before a failure. Waits for a full pipe, also
/// a non-blocking one. A closed pipe gives 109, a full disk 112; one that accepts nothing without an error as well.
DWORD Write(TFile file, const void* buffer, DWORD size, DWORD& written);
/// Moves the file pointer and returns its new position. 87 for a position before the start, 1 for a pipe.
DWORD Seek(TFile file, LONGLONG distance, EOrigin origin, LONGLONG& position);
/// Writes the data of the file to the disk; success if it is on no disk that supports this.
DWORD Flush(TFile file);
/// Closes the file, also when it fails because the system could not store what was written before. Releases its lock.
DWORD Close(TFile file);

// --- Metadata ---

enum class EKind { Regular, Folder, Link, Pipe, Device, Other };

struct SStatus {
    EKind kind = EKind::Other;
    bool isReadOnly = false; ///< nobody may write: no write permission bit, or the attribute on Windows
    LONGLONG size = 0;       ///< in bytes, of a regular file
    // Two open files are the same one if both of these agree.
    std::uint64_t device = 0; ///< the volume on Windows
    std::uint64_t number = 0; ///< in the device: the inode, the file index on Windows
    // Times before 1601 and unknown ones are 0.
    FILETIME createTime{}; ///< on POSIX that of the last change of the status, as creation is not recorded
    FILETIME accessTime{};
    FILETIME updateTime{};
};

/// Follows links.
DWORD GetStatus(const std::string& path, SStatus& status);
/// Of the link itself, if it is one. On Windows each reparse point that leads to another name is a link.
DWORD GetLinkStatus(const std::string& path, SStatus& status);
DWORD GetStatus(TFile file, SStatus& status);

/// Whether this user may read, or write and read, what exists at the path; opens nothing.
DWORD CheckAccess(const std::string& path, EAccess access);

/// False if the path is no link. Otherwise `next` is the path that it leads to, relative to the same folder as
/// `path`, which may not exist, and `isPlanted` whether another user may have planted the link: it is in a folder
/// that everybody can write to, and belongs neither to this user nor to the owner of the folder.
bool ReadLink(const std::string& path, std::string& next, bool& isPlanted);

struct SLocalTime {
    int year = 0, month = 0, day = 0; ///< from 1 on
    int hour = 0, minute = 0, second = 0;
    int minutesEast = 0; ///< of UTC, at that time
};
/// The time in the time zone of the user; false for one that cannot be represented.
bool ToLocalTime(const FILETIME& time, SLocalTime& local);

// --- Names ---

/// The most bytes that a path can have.
std::size_t GetMaxPathLength();
/// A path as the user types it in the form of the port: with '/' instead of '\' on Windows, unchanged on POSIX.
std::string ToPortPath(std::string path);
/// Whether '\' separates names in a path as the user types it.
bool IsBackslashSeparator();
/// Whether the path, in the ANSI code page, begins with a drive, such as "C:". Never on POSIX.
bool BeginsWithDrive(std::string_view path);
/// Whether one name, without separator, stands for a file of exactly this name: always on POSIX; on Windows not if it
/// has a colon or another character that is reserved, ends in a dot or blank, or is that of a device ("NUL.csv").
bool IsPlainName(std::string_view name);
/// One name in a form that is the same for all names of the same file in a folder: unchanged on POSIX, without regard
/// to case on Windows.
std::string ToComparableName(std::string name);

// --- Folders ---

/// Creates a folder with the usual permissions. 80 if the path exists.
DWORD MakeFolder(const std::string& path);
/// Creates a folder that only this user may access, or finds that the existing one is such a folder: it is real (no
/// link), belongs to the user, and nobody else has any permission; else 5.
DWORD MakePrivateFolder(const std::string& path);

// Extraction: every step goes down from an open folder, one name at a time, and follows no link. Names have no
// separator and are neither "." nor "..".

/// Creates a folder that must not exist (80) and that only this user may access, and opens it for the following
/// calls.
DWORD MakeRootFolder(const std::string& path, TFile& folder);
/// Opens the folder `name` in `parent`, which is created, for this user only, if it is missing. 3 for anything but a
/// real folder.
DWORD EnterFolder(TFile parent, const std::string& name, TFile& folder);
/// Creates the file `name` in `folder` for writing, for this user only. 80 if there is anything of this name.
DWORD MakeFileIn(TFile folder, const std::string& name, TFile& file);

/// Removes a folder and everything below it, whatever its names and depth, with constant stack and, on POSIX, a
/// constant number of open files (on Windows one for each level). Links are removed and never followed; if the folder
/// itself is a link, it stays. Read-only files stay with the folders above them, and so does what the system refuses
/// to remove; the rest is removed. The result tells whether the folder itself was removed.
DWORD RemoveTree(const std::string& path);

/// Removes a file or a link (not what it leads to), open or not. 5 for a folder and for a read-only file.
DWORD RemoveFile(const std::string& path);

// --- Temporary folder, numbers ---

/// The user's temporary folder, without separator at its end: absolute, writable, and one whose entries other users
/// cannot replace. On POSIX $TMPDIR if it is such a folder (not for a privileged program), else /tmp. 3 if there is
/// none.
DWORD FindTemporaryFolder(std::string& folder);
/// The environment variable that sets it.
const char* GetTemporaryFolderVariable();
/// Of letters, digits, '-': tells the users of this machine apart. The user number on POSIX.
std::string GetUserTag();
/// The number of this process.
std::uint32_t GetProcessNumber();
/// Not secret, but different in each process and for each call. Never waits.
std::uint32_t MakeRandomNumber();

// ---------------------------------------------------------------------------------------------------------------
// For a program, which owns its process. The library uses nothing below.

// --- Process ---

/// Called first. Opens closed standard streams in a way that their use fails, so that no file gets their number;
/// makes failing writes return errors instead of ending the program; makes the standard streams binary and, on a
/// console of Windows, UTF-8.
void PrepareProgram();
/// The arguments of `main` in UTF-8, with the name of the program.
std::vector<std::string> GetArguments(int argc, const char* const* argv);
/// The name of the encoding of the user's locale, such as "SJIS" or "UTF-8"; empty if unknown. UTF-8 on Windows, as
/// on its console.
std::string GetLocaleEncoding();
/// The code for an errno of the standard library's functions.
DWORD CodeOfErrno(int error);

// --- Encodings ---

/// What DecodeCharacters tells of bytes that mean nothing.
inline constexpr char16_t noCharacter = 0xFFFF;

/// The characters of an encoding of the system: `codePage` is 874, 1250 to 1258, 28590 + n for ISO 8859-n, or 20932
/// for EUC-JP, all of whose characters are in the Basic Multilingual Plane. `bytes` holds characters of `length`
/// bytes each, and `characters` gets as many. 50 if the system does not have the encoding.
DWORD DecodeCharacters(unsigned codePage, std::string_view bytes, std::size_t length,
                       std::vector<char16_t>& characters);

// --- Interruption ---

/// Whenever the user or the system ends the program (Ctrl-C, closing of the terminal, SIGTERM and the like, but not a
/// signal that is ignored), restores the terminal, calls `cleanUp` once and ends the program as it would have ended.
/// `cleanUp` may run between any two instructions or in another thread: it may use lock-free atomics, Discard and
/// DiscardTree, and nothing else.
void HandleInterruption(void (*cleanUp)());
/// Delays interruptions until ReleaseInterruption, so that, for example, a file and its registration change together.
/// The calls nest in each thread. A thread that is started between them never gets an interruption. The thread that
/// does must not hold a lock then that one between the calls may wait for: it waits for that one.
void HoldInterruption();
void ReleaseInterruption();

/// Removes a file or link of this program, whatever its permissions, open or not; failures are ignored.
void Discard(const char* path) noexcept;
/// As RemoveTree, for the handler of an interruption.
void DiscardTree(const char* path) noexcept;

// --- Threads ---

/// Starts a thread of the library, which takes no signal of the host: all of them are blocked in it, except those
/// that report a fault of its own. `work` throws nothing. Throws std::system_error when the system refuses the
/// thread.
std::thread StartThread(std::function<void()> work);

// --- Terminal ---

/// Whether a standard stream is a terminal that obeys control sequences (ESC '['); on Windows a console, whose
/// obedience this switches on.
bool IsTerminal(EStream stream);
/// The columns of the terminal; 0 if unknown.
int CountTerminalColumns(EStream stream);
/// Shows the prompt on the terminal of the user, not on a standard stream, and reads a line from there without echo,
/// at most `sizeMax` bytes in UTF-8, without its line end. An interruption restores the echo. False if there is no
/// terminal or the line cannot be read.
bool AskSecret(const std::string& prompt, std::size_t sizeMax, std::string& line);

// --- Temporary files and replacement ---

/// Creates an empty file in the temporary folder that only this user may access, for writing and reading. It can be
/// opened at `path` as long as `file` is open. If `isNamed`, it has to be discarded at the end; else nothing remains,
/// whatever ends the program.
DWORD MakeTemporaryFile(TFile& file, std::string& path, bool& isNamed);
/// As above, with a name that ends in `extension` (".xlsx"); it has to be discarded.
DWORD MakeTemporaryFile(const std::string& extension, TFile& file, std::string& path);
/// Creates a name in the temporary folder with this extension for the existing file `original`, so that opening
/// `path` opens the same file, or, where the system has no such links, a copy of it. It has to be discarded.
DWORD MakeTemporaryLink(const std::string& original, const std::string& extension, std::string& path);

// A file that replaces `target` when it is complete. The caller chooses the hidden name and discards it.

/// Creates a file without a name in the folder of `target`, for writing, for this user only. 50 where there are no
/// such files, as on Windows; other codes as well, after which a hidden name may still work.
DWORD MakeNamelessFile(const std::string& target, TFile& file);
/// Creates a new file for writing, on POSIX for this user only; on Windows with the rights that its folder passes on,
/// which `target` shall have at the end. 80 if the path exists.
DWORD MakeHiddenFile(const std::string& path, TFile& file);
/// Gives a file without a name its name. 80 if the path exists.
DWORD GiveName(TFile file, const std::string& path);
/// Takes over the owner of an existing `target`, if permitted, and returns in `permissions` those the file shall have
/// when it is complete: those of `target`, or the usual ones of a new file.
void TakeOverOwner(TFile file, const std::string& target, std::uint32_t& permissions);
DWORD SetPermissions(TFile file, std::uint32_t permissions);
/// Renames the open file at `path` to `target`, which it replaces in one step; other programs see the old file or the
/// new one. It stays open.
DWORD MoveOver(TFile file, const std::string& path, const std::string& target);

} // namespace NSTQ::Platform::Port
