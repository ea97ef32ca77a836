// Unpacks a zip archive into a new folder.
//
// The archive may come from anywhere, so everything about it is checked before the first byte is written, and nothing
// outside the destination is ever changed. Names are rejected, never rewritten. The whole archive is rejected when
//
//   structure    it is truncated, has more than one disk, a comment that does not end with the file, a directory that
//                is damaged or larger than MAX_DIRECTORY_SIZE, a local header that names another entry than the
//                directory does, or entries that overlap each other or the directory
//   count, size  it has more than MAX_ENTRIES entries, or makes more files and folders than that (folders without an
//                entry included), more than MAX_PARTS parts in all names, more than MAX_AES_ENTRIES entries with AES,
//                states more than MAX_TOTAL_SIZE bytes in total, or has an entry of more than RATIO_FREE_SIZE bytes
//                that states more than MAX_RATIO times its compressed size
//   names        an entry's name has a separator at its start, an empty part, or one that SCEntryNames does not
//                allow: ".", "..", one that ends with a dot or blank, has a colon ("C:") or is that of a device
//                ("nul.csv"); a control character, more than MAX_DEPTH parts or MAX_PATH_SIZE bytes, a part of more
//                than 255 bytes, bytes that are not UTF-8 although it is flagged so, or characters that the ANSI code
//                page cannot represent
//   conflicts    two entries have the same path, or one is a file where another needs a folder, or two paths name a
//                folder in different case; without regard to case, as SCEntryNames folds it
//   types        an entry is a link, a device, a pipe or a socket by its attributes, or a folder with content
//   methods      a compression or encryption is unknown, or an entry is encrypted and the password is empty
//
// While unpacking it is rejected when an entry has more or fewer bytes than it states (bytes are counted while they
// are unpacked, so that the limits apply whatever is stated), a checksum or authentication code is wrong, the
// password is wrong, or the system fails (a full disk, for example). AES entries of version 2 (AE-2) have no
// checksum, whatever value is stored: the authentication code replaces it. What was unpacked until then stays for the
// caller to remove.
//
// Both '\' and '/' separate the parts of a name; one at its end makes the entry a folder. Names with the UTF-8 flag
// become the names on disk unchanged; others are texts in the ANSI code page, so that CreateFileA finds them under
// the same bytes. Folders get mode 0700 and files 0600 (less the umask), whatever the archive says; times are not
// restored. Supported encryption: traditional (ZipCrypto) and AES of WinZip.
//
// A build without the zip provider rejects every archive.
#pragma once

#include "tqcAccess/Types.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace NSTQ::NSTQCore {

class CUnZip {
public:
    static constexpr std::size_t MAX_ENTRIES = 10'000;
    /// Encrypted with AES: the derivation of the key of each takes about two milliseconds.
    static constexpr std::size_t MAX_AES_ENTRIES = 1'000;
    static constexpr std::size_t MAX_DIRECTORY_SIZE = std::size_t{16} << 20;
    static constexpr std::uint64_t MAX_TOTAL_SIZE = std::uint64_t{4} << 30;
    /// Deflate reaches 1032 at most; small entries are exempt, because their size is harmless.
    static constexpr std::uint64_t MAX_RATIO = 1'100;
    static constexpr std::uint64_t RATIO_FREE_SIZE = std::uint64_t{1} << 20;
    static constexpr std::size_t MAX_DEPTH = 64;
    /// Of all names together; unpacking opens a folder for each.
    static constexpr std::size_t MAX_PARTS = 65'536;
    /// Bytes in the form in which the name is stored on disk.
    static constexpr std::size_t MAX_PATH_SIZE = 1'024;

    /// Keeps copies of the archive's path (text in the ANSI code page) and of the password, whose bytes are used
    /// unchanged and wiped at the end; null or empty means none. Opens nothing.
    CUnZip(const char* pArchive, const char* pPassWord);
    CUnZip(const CUnZip&) = delete;
    CUnZip& operator=(const CUnZip&) = delete;
    ~CUnZip();

    /// Creates the folder `pFolder` (text in the ANSI code page; its parent must exist, it must not) and unpacks all
    /// entries below it. True only when the whole archive was unpacked and stored. On false the folder was not
    /// created, or contains a part. The archive, a regular file or a link to one, is opened for this call only, and
    /// is rejected while another opener excludes readers. Throws only std::bad_alloc, with the same state as on
    /// false.
    ///
    /// On false GetLastError returns the reason: 13 a name, type, count or size is not allowed; 23 the password is
    /// wrong or the content damaged, which traditional encryption cannot distinguish; 50 an unknown method or
    /// encryption; 86 an entry is encrypted and the password missing or wrong; 1392 not an archive, or a damaged one;
    /// else the error of the system.
    bool Uncompress(const char* pFolder);

private:
    std::string m_strArchive;
    std::string m_strPassWord;
};

} // namespace NSTQ::NSTQCore
