// CCsvOutPut: writes rows as CSV.
//
// Rows come in the shape in which the readers hand them out. Texts are bytes in the ANSI code page and are written
// as they are: a field that holds the separator or a quote is enclosed in quotes and its quotes are doubled; with
// SetQuoteLineEnds one that holds a line end is, too. Nothing else (blanks, control bytes) causes quoting. Output is
// held back in a buffer of 64000 bytes and written when the next piece would not fit, and at FileClose. The writer
// owns its buffer and file; one thread.
//
// A failed write loses the bytes that were waiting; the row in hand then returns false and GetErrorCode tells why.
// Where an operation cannot report it (the line end, FileClose), only the error code does, so look at it after
// FileClose. It is never reset to 0.
//
// A header or field that is longer than the buffer is written straight through after the buffer has been flushed.
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
    /// file is closed first, unless the path is refused: a relative path (false, error code 3) or a name that cannot
    /// be a new file's (false, error code unchanged) leaves everything as it was. When the file cannot be created:
    /// false with the system's error code, and no file is open.
    bool FileOpen(const char* pPath);

    /// Writes what is held back and closes the file; always true.
    bool FileClose();

    /// Writes a row of `dwCount` fields with their lengths in bytes; the fields need no NUL and are not changed.
    /// False as soon as a write fails; the rest of the row is not written then.
    bool WriteLineData(char** ppData, const WORD* pLen, DWORD dwCount);
    /// The same for the arrays that a reader hands out. A template, so that a null pointer means the other one.
    template <std::same_as<const char> TChar>
    bool WriteLineData(TChar* const* ppData, const WORD* pLen, DWORD dwCount) {
        return WriteRow(ppData, pLen, dwCount);
    }

    /// Writes a ready-made line and the line end. False when a write fails, and for a header whose bytes and line end
    /// together exceed 64000 bytes (it is written all the same).
    bool WriteHeaderData(const char* pHeader, WORD wLength);

    /// Writes the line end; always true.
    bool WriteCRLF();

    /// The separator; ',' at first. Kept across files, like the line end.
    void SetSeparator(char cSeparator);
    /// The line end; CR and LF at first. 0 as the second byte makes a line end of one byte.
    void SetDelimiter(char cPre, char cPost);
    /// Whether a field with a CR, an LF or the first byte of the line end is enclosed in quotes; off at first, when
    /// such a field splits its row for whoever reads it. Kept across files.
    void SetQuoteLineEnds(bool bQuote);
    /// Why the last failed operation failed, as a system error code; 0 while none has. Success does not reset it.
    DWORD GetErrorCode();

protected:
    /// Writes what is held back; the buffer is empty afterwards, also after a failure.
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
