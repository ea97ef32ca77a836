// CFixDataAccess: the reader of fixed-length text.
//
// A record is a row of columns of known byte widths, without separators and quotes; the widths and whether records
// end with a line end come from the description (SetFixColLen and GetIsExistFixCRLF) and are copied at construction.
// Bytes are returned without conversion, and a double-byte character across the end of a column is split. Leading
// spaces and TABs and trailing spaces of a column are removed, TABs after content become spaces that are not trimmed,
// other control bytes are removed. A line end or a SUB (0x1A) inside a column ends the record; the columns after it
// are not counted.
//
// Limits:
//   fields  The count includes all columns that were read; the arrays hold the first dwMaxFieldCnt.
//   field   A longer column is truncated to dwMaxFieldSize, or one byte less so that no half character remains.
//   record  The columns must fit the line buffer, each with its NUL: the sum of the widths plus the number of
//           columns is at most dwMaxLineSize + 1 (which counts as 65536 at most). FileOpen rejects any other layout
//           with false and error code 87 (invalid parameter) without opening the file. A read nevertheless returns
//           false at the first column for which there is no room, and never writes beyond a buffer.
//
// A failed read of the file ends the current column, leaves the columns after it empty and sets the error code; the
// result is false when records end with a line end and data remain, else true.
// At the end of the data further reads return true with all columns empty, so call HasNextLineData before each.
#pragma once

#include "VCTextFileOperater.h"

namespace NSTQ::NSTQCore {

class TQCACCESS_API CFixDataAccess : public VCTextFileOperater {
public:
    /// `pInfo` must not be null and is not kept; at most 65535 columns. Throws std::bad_alloc.
    CFixDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize, const CSourceDataInfo* pInfo);
    ~CFixDataAccess() override;

    /// As the base class, for a layout that fits the line buffer.
    bool FileOpen(const CSourceDataInfo* pInfo) override;

    /// Reads the next record. With no columns: false while data remain, nothing is consumed.
    bool GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount) override;

private:
    bool _FitsLineBuffer() const;
    bool _FinishRecord(bool bStored, bool bEnded);
    char* _ReadOrdinaryColumns(CFillCursor& cursor, char* pField, DWORD& dwColumn) const;

    DWORD m_dwFieldSizeLimit;
    DWORD m_dwLineSizeLimit;
    DWORD m_dwFieldCntLimit;
    std::unique_ptr<WORD[]> m_pFixColLen;
    WORD m_wFixColCnt;
    LONG m_bIsExistFixCRLF; ///< 0 or 1
};

} // namespace NSTQ::NSTQCore
