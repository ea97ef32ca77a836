// The types of columns: EDataType and SFieldType, as the fields of ADO tell them.
//
// The numbers and names are those of ADO's DataTypeEnum. They are scoped, so that a program may also include the
// system's own header of ADO. The sources of this library use these:
//
//   type              sources                          VARIANT of a value
//   adUnsignedTinyInt Byte                             VT_UI1
//   adSmallInt        Integer                          VT_I2
//   adInteger         Long Integer, AutoNumber         VT_I4
//   adBigInt          Large Number                     VT_I8
//   adSingle          Single                           VT_R4
//   adDouble          Double; numbers of workbooks     VT_R8
//   adCurrency        Currency                         VT_CY
//   adNumeric         Decimal                          VT_DECIMAL, whose scale is that of the column
//   adDecimal         calculated Decimal               VT_DECIMAL, whose scale is that of the value
//   adDate            Date/Time; dates of workbooks    VT_DATE; VT_R8 for one outside the years 100 to 9999, which
//                                                      only a database contains
//   adBoolean         Yes/No; booleans of workbooks    VT_BOOL
//   adGUID            GUID                             VT_BSTR: {00112233-4455-6677-8899-AABBCCDDEEFF}
//   adVarWChar        Short Text, Date/Time Extended,  VT_BSTR
//                     attachments; texts of workbooks
//   adLongVarWChar    Long Text                        VT_BSTR
//   adBinary          Binary of fixed size             bytes; VT_BSTR where a value is asked for as a reader shows it
//   adVarBinary       other Binary, unknown types      the same
//   adLongVarBinary   OLE Object                       the same
//
// A missing value is VT_NULL in a column of any type. The text sources have no types: every column is a text.
//
// A workbook has no types of columns. The type of a column is the one that all its cells share; cells without a value
// and, when the first row of the sheet is its header, the cells of this row do not count. A column without any value,
// and one whose cells differ, is adVarWChar; in such a column each value still has its own VARIANT type and is to be
// taken by its text. Error values (#N/A) and spans of time are texts.
#pragma once

#include "Types.h"

namespace NSTQ {

/// The type of a column. A source that the system reads may also have another number of ADO's.
enum class EDataType : LONG {
    adEmpty = 0,             ///< no type
    adSmallInt = 2,          ///< 16 bits, signed
    adInteger = 3,           ///< 32 bits, signed
    adSingle = 4,            ///< a float
    adDouble = 5,            ///< a double
    adCurrency = 6,          ///< 64 bits, signed: ten-thousandths
    adDate = 7,              ///< days since 1899-12-30 as a double; the absolute value of the fraction is the time
    adBoolean = 11,          ///< true or false
    adVariant = 12,          ///< each value has its own type
    adDecimal = 14,          ///< a fixed-point number with a scale of its own
    adTinyInt = 16,          ///< 8 bits, signed
    adUnsignedTinyInt = 17,  ///< 8 bits, unsigned
    adUnsignedSmallInt = 18, ///< 16 bits, unsigned
    adUnsignedInt = 19,      ///< 32 bits, unsigned
    adBigInt = 20,           ///< 64 bits, signed
    adUnsignedBigInt = 21,   ///< 64 bits, unsigned
    adGUID = 72,             ///< a GUID
    adBinary = 128,          ///< bytes
    adChar = 129,            ///< text in the ANSI code page
    adWChar = 130,           ///< UTF-16 text
    adNumeric = 131,         ///< a fixed-point number with the scale of its column
    adDBDate = 133,          ///< a date
    adDBTime = 134,          ///< a time
    adDBTimeStamp = 135,     ///< a date and a time
    adVarChar = 200,         ///< text in the ANSI code page
    adLongVarChar = 201,     ///< the same, of any length
    adVarWChar = 202,        ///< UTF-16 text
    adLongVarWChar = 203,    ///< the same, of any length
    adVarBinary = 204,       ///< bytes
    adLongVarBinary = 205,   ///< the same, of any length
};

/// The type of a column with what belongs to it.
struct SFieldType {
    EDataType type = EDataType::adVarWChar; ///< see above
    /// Digits of adNumeric, at most 28, those after the point included; 0 for every other type. A damaged database
    /// may contain a value with more.
    unsigned char precision = 0;
    unsigned char numericScale = 0; ///< digits after the point of adNumeric; 0 for every other type
    /// The most UTF-16 units of a text or bytes of a binary value; 0 when there is no limit or it is unknown. Without
    /// meaning for other types.
    DWORD definedSize = 0;

    /// Whether all of it is equal.
    bool operator==(const SFieldType&) const = default;
};

} // namespace NSTQ
