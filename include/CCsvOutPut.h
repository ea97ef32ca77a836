// CCsvOutPut: writes rows as CSV.
//
// Rows have the form in which the readers return them. Texts are bytes in the ANSI code page and are written
// unchanged: a field that contains the separator or a quote is enclosed in quotes and its quotes are doubled; with
// SetQuoteLineEnds this also applies to line ends. Nothing else (spaces, control bytes) causes quoting. Output is
// collected in a buffer of 64000 bytes and written when the next piece would not fit, and at FileClose. The writer
// owns its buffer and file; one thread.
//
// A failed write loses the content of the buffer; writing the row returns false and GetErrorCode returns the reason.
// Operations that always return true (the line end, FileClose) report a failure only by the error code, so check it
// after FileClose. It is never reset to 0.
//
// A header or field that is longer than the buffer is written directly after the buffer has been flushed.
#pragma once

#include "SCDataAccessDefine.h"

#include <concepts>
#include <memory>

namespace NSTQ::NSTQCore {

class TQCACCESS_API CCsvOutPut {
public:
    /// Throws std::bad_alloc.
    CCsvOutPut();
    /// Closes the file.
    ~CCsvOutPut();
    CCsvOutPut(const CCsvOutPut&) = delete;
    CCsvOutPut& operator=(const CCsvOutPut&) = delete;

    /// Creates the file at an absolute path, replacing an existing one; nobody else may open it meanwhile. An open
    /// file is closed first, unless the path is rejected: a relative path (false, error code 3) or an invalid file
    /// name (false, error code unchanged) changes nothing. When the file cannot be created: false with the error code
    /// of the system, and no file is open.
    bool FileOpen(const char* pPath);

    /// Writes the buffer and closes the file; always true.
    bool FileClose();

    /// Writes a row of `dwCount` fields with their lengths in bytes; the fields need no NUL and are not changed.
    /// False as soon as a write fails; the rest of the row is not written then.
    bool WriteLineData(char** ppData, const WORD* pLen, DWORD dwCount);
    /// The same for the arrays of a reader. A template, so that a null pointer selects the other overload.
    template <std::same_as<const char> TChar>
    bool WriteLineData(TChar* const* ppData, const WORD* pLen, DWORD dwCount) {
        return WriteRow(ppData, pLen, dwCount);
    }

    /// Writes a ready-made line and the line end. False when a write fails, and for a header whose bytes and line end
    /// together exceed 64000 bytes (it is written nevertheless).
    bool WriteHeaderData(const char* pHeader, WORD wLength);

    /// Writes the line end; always true.
    bool WriteCRLF();

    /// The separator; ',' by default. Kept across files, like the line end.
    void SetSeparator(char cSeparator);
    /// The line end; CR and LF by default. 0 as the second byte makes a line end of one byte.
    void SetDelimiter(char cPre, char cPost);
    /// Whether a field with a CR, an LF or the first byte of the line end is enclosed in quotes; off by default; a
    /// program that reads the file then splits such a row. Kept across files.
    void SetQuoteLineEnds(bool bQuote);
    /// Why the last failed operation failed, as a system error code; 0 while none has. Success does not reset it.
    DWORD GetErrorCode();

protected:
    /// Writes the buffer; it is empty afterwards, also after a failure.
    bool WriteBuffer();

private:
    void GetArea();
    void FreeArea();
    bool CopyWriteBuff(const char* pData, WORD wLength);
    bool WriteRow(const char* const* ppData, const WORD* pLen, DWORD dwCount);
    DWORD WriteFields(const char* const* ppData, const WORD* pLen, DWORD dwField, DWORD dwCount);
    bool WriteField(const char* pField, WORD wLength);
    bool WriteDoubled(const char* pField, WORD wLength);
    bool CopySplit(const char* pData, DWORD dwLength);
    bool WriteToFile(const char* pData, DWORD dwLength);
    void SetCsvDataAccessErrorCode();

    std::unique_ptr<char[]> m_pWriteBuff;
    DWORD m_dwWriteSize = 0;
    char m_cSeparator = SCDataAccessDefine::CAMMA_CODE;
    char m_cPreDelimiter = SCDataAccessDefine::CR_CODE;
    char m_cPostDelimiter = SCDataAccessDefine::LF_CODE;
    bool m_bQuoteLineEnds = false;
    HANDLE m_hFile = nullptr;
    DWORD m_dwErrorCode = 0;
};

} // namespace NSTQ::NSTQCore
