// Converts the bytes of a field to a value.
//
//   Boolean                      VT_BOOL, never null
//   Byte, Integer, Long, BigInt  VT_UI1, VT_I2, VT_I4, VT_I8
//   Single, Double               VT_R4, VT_R8
//   Currency, Numeric            VT_CY, VT_DECIMAL
//   DateTime                     VT_DATE; outside the years 100 to 9999, which VT_DATE cannot represent, the
//                                number as VT_R8
//   ExtendedDateTime             VT_BSTR: 2024-01-31 23:59:59.1234567
//   Text, Memo                   VT_BSTR; a hyperlink as stored: text#address#subaddress
//   Guid                         VT_BSTR: {00112233-4455-6677-8899-AABBCCDDEEFF}
//   Binary, Ole, unknown types   VT_BSTR: 0x and two hexadecimal digits for each byte; only the first 65535 bytes,
//                                which is more than a field of a reader can hold
//   Complex                      VT_BSTR, empty: attachments and multivalued fields are in separate tables
//   calculated                   the value stored with the row, by the type of the result
// An exact value of Binary, Ole and unknown types has all its bytes, and no text of them is made.
#pragma once

#include "platform/automation/Variant.h"
#include "providers/access/CLongValues.h"
#include "providers/access/CRowFields.h"
#include "providers/common/CPlainTexts.h"

namespace NSTQ::Providers {

/// A value and the text that it may point to, whose memory is reused.
struct SFieldValue {
    Platform::VARIANT value = {};
    Platform::CBstr text;
    std::span<const unsigned char> bytes; ///< the exact value of bytes, whose memory is the decoder's or the row's
};

class CFieldDecoder {
public:
    /// `database` outlives the object.
    explicit CFieldDecoder(const CDatabase& database) : m_database(database), m_longValues(database) {}

    /// The type of the values of a column.
    SFieldType GetType(const SColumn& column) const;
    /// Stores the field of the column in `target`; VT_NULL when there is none. Throws CSourceError.
    void Decode(const SColumn& column, const CRowFields& fields, SFieldValue& target);
    /// The same for the exact value: bytes are VT_ARRAY | VT_UI1 and in `target.bytes`, valid until the next call and
    /// as long as the row.
    void DecodeExactly(const SColumn& column, const CRowFields& fields, SFieldValue& target);
    /// The field as a text of `texts`; none when it is null, not plain or damaged, and for types whose text is made
    /// of the bytes. `scratch` is changed.
    std::string_view PutPlain(const SColumn& column, const CRowFields& fields, CPlainTexts& texts,
                              SFieldValue& scratch);
    /// The bytes of a field, a long value as a whole; none when it is null. Valid until the next call and as long as
    /// the row.
    std::span<const unsigned char> GetBytes(const SColumn& column, const CRowFields& fields);

private:
    using CBytes = std::span<const unsigned char>;

    /// In bytes.
    struct SLongValueLimits {
        std::size_t binary;  ///< of an OLE object only so many are read
        std::size_t longest; ///< a longer value is an error
    };

    std::optional<CBytes> Read(const SColumn& column, const CRowFields& fields, const SLongValueLimits& limits,
                               SFieldValue& target);
    std::string_view PutPlainText(CBytes bytes, CPlainTexts& texts) const;
    void DecodeBytes(const SColumn& column, CBytes bytes, SFieldValue& target);
    void DecodeOther(const SColumn& column, CBytes bytes, SFieldValue& target);
    void DecodeText(CBytes bytes, SFieldValue& target);

    const CDatabase& m_database;
    CLongValues m_longValues;
};

} // namespace NSTQ::Providers
