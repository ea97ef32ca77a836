// CCsvDataAccess: the reader of delimited text, one record per call.
//
// Sources in the ANSI code page (RCS_ANSI) are split without conversion. No record is a syntax error: spaces around
// fields are removed (also inside quotes), a quote at the start of a field opens a quoted part, a doubled quote in it
// stands for one quote, text after the closing quote belongs to the field, control bytes are removed, a TAB inside a
// field becomes a space that is not trimmed, and SUB (0x1A) outside quotes ends the record.
//
// Limits:
//   fields  A record with more than dwMaxFieldCnt fields is read; the count includes all, the arrays hold the first.
//   field   A longer field is truncated to dwMaxFieldSize, or one byte less so that no half character remains.
//   record  Each byte of a field counts, stored or removed, and one for each field end. If the line end of a record
//           is not reached within dwMaxLineSize, the read fails: false, error code 0, `dwCount` is the number of
//           fields so far, the other parameters are not assigned. The next read continues at the same position.
//           A dwMaxLineSize above 65535 is treated as 65535, because lengths have 16 bits.
//
// With CSourceDataInfo::SetKeepLineEnds, in both grammars, a line end inside quotes does not end the record and stays
// in the field: each CR and LF byte, also a single one, and the line end that is set, whatever its bytes, except a
// NUL, which no text contains. It is content: spaces before it are kept, and each of its bytes counts against the
// limits. If the record limit is reached within a line end, the read fails. Outside quotes nothing changes, and other
// control bytes are removed as before. GetSpecificLineData still counts line ends inside quotes.
//
// A failed read of the file ends the current record: its fields are returned, the result is false with the error code
// of the system; in UTF-8 the result is true and only the error code shows it. The same applies to a file that has
// become shorter since it was opened (38). A SUB at the start of a field before the end of the file returns false
// with error code 0. After the last record of a file that ends with a line end, one more read succeeds with 0 fields.
//
// Sources in UTF-8, and those of fewer than 4 bytes with RCS_AUTO, follow another grammar: every space outside quotes
// is removed, also inside a field; a quote opens a quoted part anywhere; TABs are removed unless they are the
// separator; an empty line has 0 fields; SUB ends a record that is not empty and is removed at its start. The record
// is converted to the ANSI code page: invalid bytes become U+FFFD, characters that the page cannot represent '?'. The
// field count never exceeds dwMaxFieldCnt. The read of a record of more than dwMaxLineSize bytes before its
// conversion fails: false, nothing assigned, the next read starts inside the record. For a record that exceeds
// dwMaxLineSize only after its conversion, NULs included, it returns true with 0 fields. A failed read of the file
// ends the current record with true and the error code of the system. After the last record HasNextLineData is false
// immediately.
#pragma once

#include "VCTextFileOperater.h"

namespace NSTQ::NSTQCore {

class TQCACCESS_API CCsvDataAccess : public VCTextFileOperater {
public:
    /// Throws std::bad_alloc.
    CCsvDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize);
    /// `bQuoteNewLine`: a line end inside quotes is removed and the record continues; otherwise it ends the record. A
    /// description that keeps line ends takes precedence.
    CCsvDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize, bool bQuoteNewLine);
    /// `eCharSet` applies until FileOpen replaces it with that of the description.
    CCsvDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize, bool bQuoteNewLine,
                   CSourceDataInfo::EReadCharSet eCharSet);
    ~CCsvDataAccess() override;

    /// As VCTextFileOperater::FileOpen; the description determines whether line ends inside quotes are kept.
    bool FileOpen(const CSourceDataInfo* pInfo) override;

    /// Reads the next record; see above for when it returns false.
    bool GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount) override;

    /// As above, and also returns the bytes of the record in the file, including its line end or SUB:
    /// `dwRecordSize` bytes at `pRecord`, not NUL-terminated, valid as long as the fields. A record of more than
    /// dwMaxLineSize raw bytes returns false. Otherwise the result is true once the record has ended, even at a SUB
    /// or a failed read. For sources in other character sets `dwRecordSize` is 0.
    bool GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount, const char*& pRecord,
                     DWORD& dwRecordSize);

    /// The separator and line end of an output, as CCsvOutPut has them.
    struct SForm {
        char cSeparator;     ///< between the fields
        char cPreDelimiter;  ///< ends a record; below the space, else nothing is copied
        char cPostDelimiter; ///< follows it; 0 for a line end of one byte
    };
    /// A fast way for records that are to be written and not looked at: copies the next ones to `pText`, each in the
    /// form and with the line end that CCsvOutPut, which quotes line ends, gives to the fields that GetLineData would
    /// return. At most `dwMaxCount` records and `dwSize` bytes; `dwSize` is then the size of the text. Returns their
    /// number; bytes of `pText` after them may have changed.
    ///
    /// It takes only records that are in memory already and are plain: without quotes, control bytes or the new
    /// separator, and without spaces at an end of a field. Which of them depends on the processor, so 0 does not mean
    /// that there are no more: GetLineData reads any. It takes none of a source in UTF-8 (RCS_UTF8), with a limit
    /// below 64000, or with a separator or line end that is not usual.
    DWORD CopyPlainRecords(const SForm& form, DWORD dwMaxCount, char* pText, DWORD& dwSize);

    /// The offset in the file, in bytes, of the quote that was not closed in the last record: its quoted part
    /// extended to the record limit or the end of the data. -1 when there is none: each quote was closed, or a line
    /// end (or in UTF-8 a SUB) inside quotes ended the record. It shows where a closing quote is missing, or a quote
    /// is data.
    LONGLONG GetOpenQuotePosition() const;

private:
    class CRecordScan;
    class CRecordCollector;

    bool _GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount, bool bKeepRecord, const char*& pRecord,
                      DWORD& dwRecordSize);
    bool _GetLineDataWithConvert(const char**& ppData, const WORD*& pLen, DWORD& dwCount, bool bKeepRecord,
                                 const char*& pRecord, DWORD& dwRecordSize);
    bool _GetRecordData(unsigned char* pBuff, DWORD* pdwSize, DWORD& dwConverted, DWORD& dwFields);
    void _Initial(DWORD dwSize, bool bQuoteNewLine);
    bool OnReread() override;

    void _StartRecord(bool bKeepRecord);
    bool _FinishRecord(bool bResult, const char**& ppData, const WORD*& pLen, const char*& pRecord,
                       DWORD& dwRecordSize);
    std::size_t _ConvertRecord(unsigned char* pText, std::size_t size, std::size_t converted) const;
    void _SplitRecord(std::size_t size, DWORD& dwCount);
    void _FollowQuotes();

    DWORD m_dwFieldSizeLimit;
    DWORD m_dwLineSizeLimit;
    DWORD m_dwFieldCntLimit;
    std::unique_ptr<char[]> m_pRecordData; ///< the raw record, dwMaxLineSize bytes
    DWORD m_dwRecordSize = 0;
    bool m_bKeepRecord = false;
    DWORD m_dwRecordStartPos = 0; ///< from where in the read buffer the raw record is still to be collected
    bool m_bQuoteNewLine = false;
    bool m_bKeepLineEnds = false;
    LONGLONG m_llOpenQuote = -1; ///< file offset; the result of GetOpenQuotePosition
    // The quotes of a record in UTF-8, followed up to an offset in the read buffer.
    bool m_bFollowQuotes = false; ///< while such a record is read
    bool m_bInQuotes = false;
    DWORD m_dwFollowed = 0;
    LONGLONG m_llOpeningQuote = -1;
    LONGLONG m_llClosingQuote = -1;
};

} // namespace NSTQ::NSTQCore
