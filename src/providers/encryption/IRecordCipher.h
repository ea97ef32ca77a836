// Decrypts the bodies of the records in an xls workbook's stream.
//
// The caller determines which bytes are encrypted: the headers of records never are, nor is the whole of the first
// records of a stream (beginning of file, the record that describes the encryption, those that tell of users and
// locks), nor are the first four bytes of the record that names a sheet.
#pragma once

#include <cstdint>
#include <span>

namespace NSTQ::Providers {

class IRecordCipher {
public:
    virtual ~IRecordCipher() = default;
    /// Decrypts in place a part of a record's body, the first byte of which stands at `streamPosition` of the stream;
    /// `recordSize` is the size of the whole body. Any order of positions is allowed; forward is fastest.
    virtual void Decrypt(std::span<unsigned char> bytes, std::uint64_t streamPosition, std::uint16_t recordSize) = 0;
};

} // namespace NSTQ::Providers
