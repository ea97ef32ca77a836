// Decrypts the bodies of the records in an xls workbook's stream.
//
// Which bytes are encrypted is the caller's to know: the headers of records never are, nor is the whole of the first
// records of a stream (beginning of file, the record that describes the encryption, those that tell of users and
// locks), nor are the first four bytes of the record that names a sheet.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace NSTQ::Providers {

class IRecordCipher {
public:
    virtual ~IRecordCipher() = default;
    /// Decrypts in place a part of a record's body, the first byte of which stands at `streamPosition` of the stream;
    /// `recordSize` is the size of the whole body. Any order of positions is right, going forward costs least.
    virtual void Decrypt(std::span<unsigned char> bytes, std::uint64_t streamPosition, std::uint16_t recordSize) = 0;
};

/// The cipher that the record FILEPASS describes; `filePassRecord` is its body. `passWord` is in the ANSI code page,
/// empty for none. Throws CSourceError: the password is missing or wrong (E_FAIL, the text says which), the record is
/// damaged, or the encryption is of an unknown kind.
std::unique_ptr<IRecordCipher> MakeRecordCipher(std::span<const unsigned char> filePassRecord, bool isBiff8,
                                                const std::string& passWord);

} // namespace NSTQ::Providers
