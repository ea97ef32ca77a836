// Unpacks a zip archive into a new folder.
//
// The archive may come from anywhere, so everything about it is checked before the first byte is written, and nothing
// outside the destination is ever touched. Names are refused, never rewritten. An archive is refused as a whole when
//
//   structure    it is cut short, has more than one disk, a comment that does not end with the file, a directory that
//                is damaged or larger than MAX_DIRECTORY_SIZE, a local header that names another entry than the
//                directory does, or entries that overlap each other or the directory
//   count, size  it has more than MAX_ENTRIES entries, more than MAX_AES_ENTRIES of them with AES,
//                claims more than MAX_TOTAL_SIZE bytes in all, or has an entry of more than RATIO_FREE_SIZE bytes
//                that claims more than MAX_RATIO times its packed size
//   names        an entry's name is empty or has an empty part, ".", "..", a drive letter ("C:"), a separator at its
//                start, a control character, more than MAX_DEPTH parts or MAX_PATH_SIZE bytes, a part of more than
//                255 bytes, bytes that are not UTF-8 where it claims to be, or characters that the ANSI code page
//                does not have
//   conflicts    two entries have the same path, or one is a file where another needs a folder (letter case counts)
//   kinds        an entry is a link, a device, a pipe or a socket by its attributes, or a folder with content
//   methods      a compression or encryption is unknown, or an entry is encrypted and the password is empty
//
// While unpacking it is refused when an entry gives more or fewer bytes than it claimed (bytes are counted as they
// come, so that the caps hold whatever was claimed), a checksum or authentication code does not fit, the password is
// wrong, or the system fails (a full disk, for one). Entries of AES in its second version (AE-2) have no checksum,
// whatever stands in its place: the authentication code is their check. What was unpacked until then stays for the
// caller to remove.
//
// '\' and '/' both separate the parts of a name; one at its end makes the entry a folder. Names with the UTF-8 flag
// become the names on disk as they are; others are texts in the ANSI code page, so that CreateFileA finds them under
// the same bytes. Folders get mode 0700 and files 0600 (less the umask), whatever the archive says; times are not
// restored. Passwords: the traditional encryption and WinZip's AES.
//
// A build without the zip provider refuses every archive.
#pragma once

#include "tqcAccess/Types.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace NSTQ::NSTQCore {

class CUnZip {
public:
    static constexpr std::size_t MAX_ENTRIES = 10'000;
    /// Encrypted with AES: each has a key of its own, which takes about two thousandths of a second.
    static constexpr std::size_t MAX_AES_ENTRIES = 1'000;
    static constexpr std::size_t MAX_DIRECTORY_SIZE = std::size_t{16} << 20;
    static constexpr std::uint64_t MAX_TOTAL_SIZE = std::uint64_t{4} << 30;
    /// Deflate reaches 1032 at most; small entries are let off, because their size harms nobody.
    static constexpr std::uint64_t MAX_RATIO = 1'100;
    static constexpr std::uint64_t RATIO_FREE_SIZE = std::uint64_t{1} << 20;
    static constexpr std::size_t MAX_DEPTH = 64;
    /// Bytes in the form in which the name is stored on disk.
    static constexpr std::size_t MAX_PATH_SIZE = 1'024;

    /// Keeps copies of the archive's path (text in the ANSI code page) and of the password, whose bytes are used as
    /// they are; null or empty means none. Opens nothing.
    CUnZip(const char* pArchive, const char* pPassWord);
    CUnZip(const CUnZip&) = delete;
    CUnZip& operator=(const CUnZip&) = delete;
    ~CUnZip();

    /// Makes the folder `pFolder` (text in the ANSI code page; its parent exists, it does not itself) and unpacks
    /// every entry below it. True only when all of the archive was unpacked and stored. On false the folder was not
    /// made, or holds a part. The archive is opened for this call only, is a regular file (or a link to one), and is
    /// refused while another opener excludes readers. Throws nothing but std::bad_alloc, and then leaves the same.
    ///
    /// On false GetLastError tells why: 13 a name, kind, count or size that is refused; 23 the password is wrong or
    /// the content damaged, which the traditional encryption cannot tell apart; 50 an unknown method or encryption;
    /// 86 an entry is encrypted and the password missing or wrong; 1392 no archive, or one that is damaged; else what
    /// the system failed with.
    bool Uncompress(const char* pFolder);

private:
    std::string m_strArchive;
    std::string m_strPassWord;
};

} // namespace NSTQ::NSTQCore
