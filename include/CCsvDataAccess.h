// CCsvDataAccess: the reader of delimited text, one record per call.
//
// Sources in the ANSI code page (RCS_ANSI) are split as they stand. The grammar never rejects a record for its
// syntax: blanks around fields are dropped (inside quotes too), a quote at a field's start opens a quoted part, a
// doubled quote in it is one quote, text after the closing quote goes on with the field, control bytes are dropped, a
// TAB inside a field becomes a space that is not trimmed, and SUB (0x1A) outside quotes ends the record.
//
// Limits:
//   fields  A record with more than dwMaxFieldCnt fields is read; the count tells all, the arrays hold the first.
//   field   A field longer than dwMaxFieldSize is cut to it, or one byte less so that no half character remains.
//   record  Each byte of a field counts, stored or dropped, and one for each field end. A record whose line end is
//           not reached below dwMaxLineSize fails its read: false, error code 0, `dwCount` with the fields so far,
//           the other parameters not assigned. Nothing is skipped: the next read starts where this one stopped.
//           A dwMaxLineSize above 65535 is taken as 65535, because lengths have 16 bits.
//
// With CSourceDataInfo::SetKeepLineEnds, in both grammars, a line end inside quotes does not end the record and stays
// in the field: CR and LF bytes as they stand, also a lone one, and the line end that is set, whatever its bytes, but
// for a NUL, which no text holds. It is content: blanks before it stay, and each of its bytes counts against the
// limits. A line end that the record limit cuts fails the read. Outside quotes nothing changes, and other control
// bytes vanish as before. GetSpecificLineData counts line ends inside quotes all the same.
//
// A failed read of the file ends the record in hand: its fields are handed out, the result is false and the error
// code the system's; in UTF-8 the result is true and only the code tells. So it is with a file that has become
// shorter since it was opened (38). A SUB at a field's start before the end of the file gives false as well, with
// error code 0. After the last record of a file that ends with a line end one more read succeeds with 0 fields.
//
// Sources in UTF-8, and those of fewer than 4 bytes whose character set was left to the reader, follow another
// grammar: every space outside quotes is dropped, also inside a field; a quote opens a quoted part anywhere; TABs are
// dropped unless they separate; an empty line has 0 fields; SUB ends a record that holds something and is dropped at
// its start. The record is converted to the ANSI code page: invalid bytes give U+FFFD, characters without a form in
// the page '?'. The field count never exceeds dwMaxFieldCnt. A record of more than dwMaxLineSize bytes before its
// conversion fails its read: false, nothing assigned, the next read starts inside it. One that has more than
// dwMaxLineSize bytes only after it, its NULs counted, is true with 0 fields. A failed read of the file ends the
// record in hand with true and the system's error code. After the last record HasNextLineData is false at once.
#pragma once

#include "VCTextFileOperater.h"

namespace NSTQ::NSTQCore {

class TQCACCESS_API CCsvDataAccess : public VCTextFileOperater {
public:
    /// Throws std::bad_alloc.
    CCsvDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize);
    /// `bQuoteNewLine`: a line end inside quotes is dropped and the record goes on; otherwise it ends the record. A
    /// description that keeps line ends has the last word.
    CCsvDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize, bool bQuoteNewLine);
    /// `eCharSet` stands until FileOpen takes the description's.
    CCsvDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize, bool bQuoteNewLine,
                   CSourceDataInfo::EReadCharSet eCharSet);
    ~CCsvDataAccess() override;

    /// As VCTextFileOperater::FileOpen, and takes from the description whether line ends inside quotes stay.
    bool FileOpen(const CSourceDataInfo* pInfo) override;

    /// Reads the next record; see above for what makes it false.
    bool GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount) override;

    /// As above, and hands out the record's bytes as they stand in the file, its line end or SUB included:
    /// `dwRecordSize` bytes at `pRecord`, not NUL-terminated, valid as long as the fields. A record of more than
    /// dwMaxLineSize raw bytes gives false. Otherwise the result is true once the record has ended, even at a SUB or
    /// a failed read. Sources in other character sets have no raw form: `dwRecordSize` is 0.
    bool GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount, const char*& pRecord,
                     DWORD& dwRecordSize);

    /// The offset in the file, in bytes, of the quote that the last record read left open: its quoted part went on up
    /// to the record limit or the end of the data. -1 when there is none: each quote was closed, or a line end (or in
    /// UTF-8 a SUB) inside quotes ended the record. Tells where a quote was forgotten, or stands as data.
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
    LONGLONG m_llOpenQuote = -1; ///< file offset; what GetOpenQuotePosition tells
    // The quotes of a record in UTF-8, followed up to an offset in the read buffer.
    bool m_bFollowQuotes = false; ///< while such a record is read
    bool m_bInQuotes = false;
    DWORD m_dwFollowed = 0;
    LONGLONG m_llOpeningQuote = -1;
    LONGLONG m_llClosingQuote = -1;
};

} // namespace NSTQ::NSTQCore
