// IDataAccess: the row reader that every kind of source implements.
//
// Calling order: construct a reader with the three sizing limits, FileOpen with a prepared description, then
// HasNextLineData and GetLineData in a loop (or the moving operations as needed), then destroy it; the destructor
// closes the file or connection. One thread at a time uses a reader; nothing is locked.
//
// The three sizing limits, always in this order:
//   dwMaxFieldCnt   entries of the two field arrays that a row is handed out in
//   dwMaxLineSize   the most bytes of one row, at most 65535
//   dwMaxFieldSize  the most bytes of one field, from 1 to 65535; a longer field is truncated, never inside a
//                   double-byte character
// The headers of the readers describe what each does at its limits.
#pragma once

#include "tqcAccess/Export.h"
#include "tqcAccess/Types.h"

namespace NSTQ::NSTQCore {

class CSourceDataInfo;

class TQCACCESS_API IDataAccess {
public:
    // For derived classes that can be copied; the readers of the library cannot.
    IDataAccess() = default;
    IDataAccess(const IDataAccess&) = default;
    IDataAccess& operator=(const IDataAccess&) = default;
    virtual ~IDataAccess();

    /// Opens the source that `pInfo` describes, after CSourceDataInfo::PrepareReadSourceData, and is then before its
    /// first row. On failure returns false; the cause is in GetErrorCode, for workbooks and databases in
    /// CADOOperater::GetErrorRet. A null `pInfo` gives false.
    virtual bool FileOpen(const CSourceDataInfo* pInfo) = 0;

    /// True while another row may follow. Use it, not the result of GetLineData, to end a loop over the rows.
    virtual bool HasNextLineData() = 0;

    /// Reads the next row. On success `ppData` is the reader's array of NUL-terminated field texts in the ANSI code
    /// page, `pLen` the reader's array of their lengths in bytes, `dwCount` the number of fields of the row, which
    /// may exceed dwMaxFieldCnt: use no more entries than the smaller of the two. Arrays and texts belong to the
    /// reader and are valid until its next operation that reads or moves.
    ///
    /// At the end of the source a text reader returns true each time, delimited text with 0 fields and fixed-length
    /// text with empty columns; workbooks and databases return false. The last row of delimited text may be followed
    /// by one with 0 fields, which is not a row of the source: ignore it. Returns false when a row could not be read.
    /// The parameters need no initial value.
    virtual bool GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount) = 0;

    /// Goes back to the beginning of the source.
    virtual bool MoveFileBegin() = 0;

    /// Goes to the end of the source.
    virtual bool MoveFileEnd() = 0;

    /// Goes to the beginning, skips `dwLine` rows and reads one as GetLineData does; row 0 is the first.
    virtual bool GetSpecificLineData(DWORD dwLine, const char**& ppData, const WORD*& pLen, DWORD& dwCount) = 0;

    /// The code of the last failure: an operating-system error code; 0 for none and for failures of another
    /// kind, such as a row above a size limit.
    virtual DWORD GetErrorCode() = 0;

    /// How far reading has come, in thousandths: 0 at the start, 1000 at the end, 0 for an empty source.
    virtual int GetReadPosition() = 0;
};

} // namespace NSTQ::NSTQCore
