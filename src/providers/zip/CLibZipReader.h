// The contents of an archive's entries, decrypted and unpacked by libzip, which nothing else here uses.
#pragma once

#include "providers/zip/CZipDirectory.h"

#include <zip.h>

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace NSTQ::Providers {

class CLibZipReader {
public:
    /// Reads through `input`, which stays open and in use for as long as this lives. An empty password means none.
    CLibZipReader(IRandomAccess& input, std::string password);
    CLibZipReader(const CLibZipReader&) = delete;
    CLibZipReader& operator=(const CLibZipReader&) = delete;
    ~CLibZipReader();

    /// After a result of false GetLastError returns the cause, in the codes of CUnZip.

    /// Opens the archive, whose directory has been read and outlives this. False when libzip finds other
    /// entries in it than the directory, or one that cannot be unpacked: an unknown method, or encrypted without a
    /// password.
    bool Open(const CZipDirectory& directory);
    /// Begins the entry at `index` of the directory. False when it cannot be, as with a wrong password. An entry with
    /// an authentication code is read once as a whole first, so that nothing of a forged one is returned.
    bool OpenEntry(std::size_t index);
    /// Returns the next bytes of the entry, and their number in `count`: 0 at its end. False when the entry is
    /// damaged, which includes a wrong checksum at its end.
    bool Read(std::span<std::byte> bytes, std::size_t& count);
    /// Returns false for an entry with damaged content.
    bool FailAsDamaged() const;

private:
    template <auto TCall>
    struct SCloser {
        template <class T>
        void operator()(T* object) const {
            TCall(object);
        }
    };

    static zip_int64_t Serve(void* self, void* data, zip_uint64_t length, zip_source_cmd_t command) noexcept;
    zip_int64_t ServeRead(std::span<unsigned char> bytes) noexcept;
    void HideMethods(std::span<unsigned char> bytes) const;
    bool BeginEntry(std::size_t index, zip_flags_t flags);
    bool Authenticate(std::size_t index);
    bool CanRead(const SZipEntry& entry, std::size_t index) const;
    bool FailFromZip(const zip_error_t* error) const;

    IRandomAccess& m_input;
    std::string m_passWord;
    std::uint64_t m_position = 0;
    zip_error_t m_error;
    std::span<const SZipEntry> m_entries;
    const SZipEntry* m_current = nullptr;
    /// The positions of the compression methods that are hidden from libzip, in ascending order.
    std::vector<std::uint64_t> m_hiddenMethods;
    bool m_isChecksumIdle = false;
    std::unique_ptr<zip_t, SCloser<zip_discard>> m_archive;
    std::unique_ptr<zip_file_t, SCloser<zip_fclose>> m_entry;
};

} // namespace NSTQ::Providers
