// Vectorised handling of ordinary bytes, selected by the features of the processor.
//
// A kernel is a set of functions for one kind of vector unit. Each handles ordinary text and stops, at a position
// where the scalar grammar of the caller can continue, before anything that it has no rule for; handling nothing is
// always correct. So the grammars stay with the readers and the writer, which give the same results with every kernel
// and with none (`Scalar`).
//
// The kernel is chosen when the library is loaded: the best one that the processor and its system can run.
#pragma once

#include "tqcAccess/Types.h"

#include <cstddef>

namespace NSTQ::Scan {

enum class EKernel { Scalar, Sse2, Avx2, Avx512 };
inline constexpr EKernel KERNELS[] = {EKernel::Scalar, EKernel::Sse2, EKernel::Avx2, EKernel::Avx512};

/// Entries that a kernel may write after the last one that it returns, so that it need not count.
inline constexpr DWORD ENTRY_SLACK = 16;

/// Bytes that a kernel may read after the texts that it splits.
inline constexpr DWORD READ_SLACK = 64;

/// The input of a record's fields and the output for them.
struct SFields {
    const unsigned char* pNext; ///< the first byte of a field; afterwards after the last field taken
    const unsigned char* pEnd;  ///< the end of the bytes; none after it is read
    char* pField;               ///< where the text of the field is written; afterwards after the last NUL
    const char** ppData;        ///< the entries for the fields' texts and lengths
    WORD* pLen;
    DWORD dwEntries;   ///< how many there are; ENTRY_SLACK more may be overwritten
    DWORD dwFields;    ///< afterwards how many fields were taken
    DWORD dwRoom;      ///< bytes that may be written at pField
    DWORD dwFieldSize; ///< the most bytes of a field
    unsigned char cSeparator;
    unsigned char cPre;
    unsigned char cPost; ///< 0: the line end has one byte
    bool bEnded;         ///< afterwards whether the line end of the record was reached and skipped
};

/// UTF-8 delimited text, where its bytes are collected, and the page that they are converted to.
struct SText {
    const unsigned char* pNext; ///< afterwards after the last byte taken
    const unsigned char* pEnd;
    char* pOut;   ///< afterwards after the last byte collected
    DWORD dwRoom; ///< bytes that may be taken; the result is never longer
    unsigned char cSeparator;
    unsigned char cPre;
    unsigned char cPost;
    bool bQuoted;    ///< whether pNext is inside quotes, before and afterwards
    bool bIsUtf8;    ///< whether the page is UTF-8 itself
    bool bConverted; ///< set to false by bytes that were taken without conversion or validation
    bool bEnded;
    /// Indexed by the upper ten bits of a UTF-16 unit: where its block of 64 begins in pBlocks. Null for no
    /// conversion.
    const unsigned short* pBlockStarts;
    const unsigned short* pBlocks; ///< a unit's code in the page; below 0x100 for a single byte, 0 when it has none
    DWORD dwSaved;                 ///< afterwards by how much the conversion has made the text shorter
    char* pField;                  ///< where the current field begins, before and afterwards
    const char** ppData;
    WORD* pLen;
    DWORD dwEntries; ///< as in SFields
    DWORD dwFields;  ///< when the record has ended, the number of its fields before; at most dwEntries are written
};

/// Texts one after another, each with its NUL.
struct STexts {
    char* pText; ///< afterwards the first text not taken
    char* pEnd;  ///< after the last NUL; READ_SLACK more bytes can be read
    const char** ppData;
    WORD* pLen;
    DWORD dwEntries; ///< as in SFields
    DWORD dwTexts;   ///< afterwards how many were taken
};

/// The columns of a record of fixed-length text.
struct SColumns {
    const unsigned char* pNext; ///< the first byte of a column; afterwards after the last column taken
    const unsigned char* pEnd;
    char* pField;          ///< afterwards after the last NUL
    const char* pFieldEnd; ///< the end of the room there
    const char** ppData;
    WORD* pLen;
    const WORD* pWidths;
    DWORD dwColumns; ///< how many may be taken
    DWORD dwColumn;  ///< the number of the first; afterwards of the first not taken
    DWORD dwFieldSize;
};

/// The fields of a row and the buffer that they go to.
struct SRow {
    const char* const* ppData;
    const WORD* pLen;
    DWORD dwFields;
    DWORD dwField; ///< the first one to write; afterwards the first one not written
    char* pOut;    ///< where it is written; afterwards after the last byte written
    char* pEnd;    ///< the end of the buffer; all bytes up to it may be overwritten
    unsigned char cSeparator;
    bool bQuoteLineEnds; ///< whether CR, LF and cPre need quotes
    unsigned char cPre;  ///< below the space, when they do
};

/// The functions are null in the scalar kernel.
struct SKernel {
    EKernel eKernel;
    const char* pName;
    /// Delimited text in the ANSI code page. Takes fields without spaces at their ends and without control bytes,
    /// unquoted or entirely in quotes.
    void (*pReadFields)(SFields& fields);
    /// Copies bytes up to the first control byte or `stop`, at most `size`; returns how many. Bytes after them, up
    /// to `size`, may be overwritten at `to`.
    DWORD (*pCopyText)(const unsigned char* from, DWORD size, char* to, unsigned char stop);
    /// Delimited text in UTF-8, without its control bytes. Converts ASCII, and characters of three bytes whose codes
    /// have two.
    void (*pCollectText)(SText& text);
    void (*pSplitTexts)(STexts& texts);
    /// Columns without control bytes, if a space is not a part of the line end.
    void (*pReadColumns)(SColumns& columns);
    /// Fields as CSV, with a separator before each except the first of the row. Stops before one that may not fit.
    /// May read bytes after the end of a field within its memory page.
    void (*pWriteFields)(SRow& row);
    /// How many bytes at the beginning of `text` are well-formed UTF-8, in whole characters. It may return
    /// fewer than there are: the blocks before the one with the first invalid byte, or before the last one.
    std::size_t (*pCountUtf8)(const unsigned char* text, std::size_t size);
};

/// Whether separator and line end are ordinary: only then may the text be given to a kernel. A line end with bytes of
/// 0x80 or above is not.
constexpr bool AreOrdinary(unsigned char cSeparator, unsigned char cPre, unsigned char cPost) {
    constexpr unsigned char tab = 0x09, sub = 0x1A, space = 0x20, quote = 0x22;
    return (cSeparator == tab || (cSeparator > space && cSeparator != quote)) && cPre < space && cPre != tab &&
           cPre != sub && cPost < 0x80;
}

const SKernel& GetKernel();

/// For tests and benchmarks, before any reader or writer is in use. False when the processor lacks it.
bool SelectKernel(EKernel eKernel);

} // namespace NSTQ::Scan
