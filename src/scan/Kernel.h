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
inline constexpr EKernel allKernels[] = {EKernel::Scalar, EKernel::Sse2, EKernel::Avx2, EKernel::Avx512};

/// Entries that a kernel may write after the last one that it returns, so that it need not count.
inline constexpr DWORD entrySlack = 16;

/// Bytes that a kernel may read after the texts that it splits.
inline constexpr DWORD readSlack = 64;

/// The input of a record's fields and the output for them.
struct SFields {
    const unsigned char* next; ///< the first byte of a field; afterwards after the last field taken
    const unsigned char* end;  ///< the end of the bytes; none after it is read
    char* field;               ///< where the text of the field is written; afterwards after the last NUL
    const char** data;         ///< the entries for the fields' texts and lengths
    WORD* lengths;
    DWORD entryCount; ///< how many there are; entrySlack more may be overwritten
    DWORD fieldCount; ///< afterwards how many fields were taken
    DWORD room;       ///< bytes that may be written at field
    DWORD fieldSize;  ///< the most bytes of a field
    unsigned char separator;
    unsigned char pre;
    unsigned char post; ///< 0: the line end has one byte
    bool hasEnded;      ///< afterwards whether the line end of the record was reached and skipped
};

/// UTF-8 delimited text, where its bytes are collected, and the page that they are converted to.
struct SText {
    const unsigned char* next; ///< afterwards after the last byte taken
    const unsigned char* end;
    char* out;  ///< afterwards after the last byte collected
    DWORD room; ///< bytes that may be taken; the result is never longer
    unsigned char separator;
    unsigned char pre;
    unsigned char post;
    bool isQuoted;    ///< whether next is inside quotes, before and afterwards
    bool isUtf8;      ///< whether the page is UTF-8 itself
    bool isConverted; ///< set to false by bytes that were taken without conversion or validation
    bool hasEnded;
    /// Indexed by the upper ten bits of a UTF-16 unit: where its block of 64 begins in blocks. Null for no
    /// conversion.
    const unsigned short* blockStarts;
    const unsigned short* blocks; ///< a unit's code in the page; below 0x100 for a single byte, 0 when it has none
    DWORD saved;                  ///< afterwards by how much the conversion has made the text shorter
    char* field;                  ///< where the current field begins, before and afterwards
    const char** data;
    WORD* lengths;
    DWORD entryCount; ///< as in SFields
    DWORD fieldCount; ///< when the record has ended, the number of its fields before; at most entryCount are written
};

/// Texts one after another, each with its NUL.
struct STexts {
    char* text; ///< afterwards the first text not taken
    char* end;  ///< after the last NUL; readSlack more bytes can be read
    const char** data;
    WORD* lengths;
    DWORD entryCount; ///< as in SFields
    DWORD textCount;  ///< afterwards how many were taken
};

/// The columns of a record of fixed-length text.
struct SColumns {
    const unsigned char* next; ///< the first byte of a column; afterwards after the last column taken
    const unsigned char* end;
    char* field;          ///< afterwards after the last NUL
    const char* fieldEnd; ///< the end of the room there
    const char** data;
    WORD* lengths;
    const WORD* widths;
    DWORD columnCount; ///< how many may be taken
    DWORD column;      ///< the number of the first; afterwards of the first not taken
    DWORD fieldSize;
};

/// The fields of a row and the buffer that they go to.
struct SRow {
    const char* const* data;
    const WORD* lengths;
    DWORD fieldCount;
    DWORD field; ///< the first one to write; afterwards the first one not written
    char* out;   ///< where it is written; afterwards after the last byte written
    char* end;   ///< the end of the buffer; all bytes up to it may be overwritten
    unsigned char separator;
    bool quotesLineEnds; ///< whether CR, LF and pre need quotes
    unsigned char pre;   ///< below the space, when they do
};

/// Records that are copied without splitting them.
struct SRecords {
    const unsigned char* next; ///< the first byte of a record; afterwards after the last record copied
    const unsigned char* end;  ///< the end of the bytes; none after it is read
    char* out;                 ///< afterwards after the last byte written
    char* outEnd;              ///< the end of the room; all bytes up to it may be overwritten
    DWORD maxCount;            ///< how many records may be copied
    DWORD count;               ///< afterwards how many were
    unsigned char separator;
    unsigned char pre;
    unsigned char post; ///< 0: the line end has one byte
    unsigned char outSeparator;
    unsigned char outPre; ///< below the space
    unsigned char outPost;
};

/// The functions are null in the scalar kernel.
struct SKernel {
    EKernel kernel;
    const char* name;
    /// Delimited text in the ANSI code page. Takes fields without spaces at their ends and without control bytes,
    /// unquoted or entirely in quotes.
    void (*readFields)(SFields& fields);
    /// Copies bytes up to the first control byte or `stop`, at most `size`; returns how many. Bytes after them, up
    /// to `size`, may be overwritten at `to`.
    DWORD (*copyText)(const unsigned char* from, DWORD size, char* to, unsigned char stop);
    /// Delimited text in UTF-8, without its control bytes. Converts ASCII, and characters of three bytes whose codes
    /// have two.
    void (*collectText)(SText& text);
    void (*splitTexts)(STexts& texts);
    /// Columns without control bytes, if a space is not a part of the line end.
    void (*readColumns)(SColumns& columns);
    /// Fields as CSV, with a separator before each except the first of the row. Stops before one that may not fit.
    /// May read bytes after the end of a field within its memory page.
    void (*writeFields)(SRow& row);
    /// Records as the writer would write the fields that the reader returns for them.
    void (*copyRecords)(SRecords& records);
    /// How many bytes at the beginning of `text` are well-formed UTF-8, in whole characters. It may return
    /// fewer than there are: the blocks before the one with the first invalid byte, or before the last one.
    std::size_t (*countUtf8)(const unsigned char* text, std::size_t size);
};

/// Whether separator and line end are ordinary: only then may the text be given to a kernel. A line end with bytes of
/// 0x80 or above is not.
constexpr bool AreOrdinary(unsigned char separator, unsigned char pre, unsigned char post) {
    constexpr unsigned char tab = 0x09, sub = 0x1A, space = 0x20, quote = 0x22;
    return (separator == tab || (separator > space && separator != quote)) && pre < space && pre != tab &&
           pre != sub && post < 0x80;
}

const SKernel& GetKernel();

/// For tests and benchmarks, before any reader or writer is in use. False when the processor lacks it.
bool SelectKernel(EKernel kernel);

} // namespace NSTQ::Scan
