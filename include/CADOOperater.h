// CADOOperater: the reader of workbooks and databases, and the listing of their sheets and tables.
//
// Rows are returned as IDataAccess says. Each value is converted to text in the ANSI code page: texts unchanged,
// other types by the user locale, a missing value to an empty text; characters that the page cannot represent become
// '?'. The text is truncated to dwMaxFieldSize bytes, never inside a character. Then leading spaces and control bytes
// are removed, a TAB becomes a space, other control bytes are removed, and so are trailing spaces, except one that
// was a TAB or precedes one. All texts of a row are in one line buffer; reading allocates no memory for a row or a
// cell.
//
// With CSourceDataInfo::SetKeepLineEnds the bytes CR and LF are content and stay, anywhere in a value, and a text is
// cleaned before it is truncated, so that removed bytes take no room. It does not apply to names.
//
// Failures: FileOpen and FileClose return false; after FileOpen GetErrorRet returns the HRESULT and
// GetErrorDescription the reason as text, and GetErrorCode is always 0. HasNextLineData, GetLineData, GetFieldsName,
// the constructor and the listing throw Platform::_com_error. A host that reads such sources must catch it, also with
// CDataAccess. No row is skipped: after a failed GetLineData the next call fails in the same way as long as the cause
// persists.
//
// Limits, where they are not those of IDataAccess:
//   columns  a sheet or table with more than dwMaxFieldCnt columns is rejected: FileOpen returns false and
//            GetErrorRet DB_E_DATAOVERFLOW (0x80040E57)
//   row      texts that with their NULs need more than dwMaxLineSize + 1 bytes throw DB_E_DATAOVERFLOW, and so does
//            a column name of more than dwMaxFieldSize + 1 bytes; nothing is written past a buffer
//   sizes    a dwMaxLineSize or dwMaxFieldSize above 65535 is taken as 65535, because lengths have 16 bits
//
// COM: the constructor enters the single-threaded apartment of its thread, the destructor leaves it (also when the
// constructor fails); each listing does so around itself. One thread constructs, uses and destroys a reader, and it
// must not have entered a multithreaded apartment. Different readers are independent.
#pragma once

#include "IDataAccess.h"
#include "tqcAccess/DataType.h"

#include <cstddef>
#include <memory>
#include <string_view>

namespace NSTQ::NSTQCore {

class TQCACCESS_API CADOOperater : public IDataAccess {
public:
    /// Throws _com_error of tqcAccess/ComError.h (E_POINTER when there is no record set object) or std::bad_alloc.
    CADOOperater(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize);
    /// Closes what is open and ignores failures.
    ~CADOOperater() override;
    CADOOperater(const CADOOperater&) = delete;
    CADOOperater& operator=(const CADOOperater&) = delete;

    /// Opens the source and the chosen sheet or table of a description on which SetSelectSchemaIndx has succeeded;
    /// only once per reader. Starts at the first row of the source; ignores the start row and character set of the
    /// description. On failure returns false; GetErrorRet is then the HRESULT of the open that failed, or 0 when the
    /// description has no connection or no record-set string. Throws nothing.
    bool FileOpen(const CSourceDataInfo* pInfo) override;

    /// Opens another sheet or table of the same source, the one that is chosen now, also after FileOpen could open
    /// the source but not the sheet. The source itself is not opened again, so that all sheets of a source that takes
    /// long to open, such as an encrypted one, can be read. Closes the sheet that was open; rows, counters and
    /// failures are those of the new one, as after FileOpen. Returns false also when the source is not open.
    bool OpenTable(const CSourceDataInfo* pInfo);

    /// Closes record set and connection. False when one of them is not open or does not close; a record set that does
    /// not close leaves the connection open. Counters and codes are unchanged. Throws nothing.
    bool FileClose();

    /// True until the last row has been read.
    bool HasNextLineData() override;

    /// False at the end of the data. On false and on an exception the three parameters are not written. `dwCount` is
    /// the number of columns, which is never above dwMaxFieldCnt.
    bool GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount) override;

    /// The first column of the last row, counted from 0, whose value was truncated so that more than spaces and
    /// control bytes is missing; -1 when there is none. The values after it may be truncated as well.
    LONG GetCutColumn() const;

    /// The column names, in the form and the buffers of a row, but each length includes the NUL, and leading spaces
    /// are kept. Does not move; overwrites the row that was returned last. 0 columns before FileOpen.
    bool GetFieldsName(const char**& ppData, const WORD*& pLen, DWORD& dwCount);

    /// The types of the columns: from the definition of a table or query, in a sheet the type that all its cells
    /// share; see tqcAccess/DataType.h. Does not move and leaves the last row and the names as they are. On success
    /// `pTypes` points to `dwCount` types, which belong to the reader and are valid until the next GetFieldsType,
    /// FileOpen or OpenTable or the reader's destruction. 0 columns before FileOpen. Throws as GetFieldsName does;
    /// the parameters are then not written.
    bool GetFieldsType(const SFieldType*& pTypes, DWORD& dwCount);

    /// Not supported: always false. GetErrorRet is 0 and GetErrorDescription empty afterwards.
    bool MoveFileBegin() override;
    bool MoveFileEnd() override;
    /// Always false; the parameters are not written.
    bool GetSpecificLineData(DWORD dwLine, const char**& ppData, const WORD*& pLen, DWORD& dwCount) override;

    /// Always 0.
    DWORD GetErrorCode() override;
    /// The HRESULT of the last FileOpen; 0 when it succeeded.
    LONG GetErrorRet();
    /// Why the last FileOpen failed, from the provider: what is wrong and where, such as "book.xlsx:
    /// xl/worksheets/sheet1.xml: ...". Text in the ANSI code page, never null; empty when FileOpen succeeded, when
    /// the description had no string for it, and when there was not enough memory. The reader owns it; it is valid
    /// until the next FileOpen, MoveFileBegin, MoveFileEnd or GetSpecificLineData, or the reader's destruction.
    const char* GetErrorDescription();

    /// Rows read in thousandths of all rows; 0 when there are none.
    int GetReadPosition() override;
    /// The number of rows; 0 before FileOpen.
    DWORD GetMaxRowNum();
    /// The number of columns; 0 before FileOpen. Available even for a sheet whose names or rows do not fit the
    /// buffers.
    DWORD GetFieldCnt();

    /// Lists the sheets and tables of a source: `dwCount` is their number, `dwSize` the bytes of all their names with
    /// one NUL after each. Always true; every failure throws _com_error. Both are unchanged when the source cannot be
    /// opened, and partial when the listing fails later.
    static bool GetSchemaNameSize(DWORD& dwSize, DWORD& dwCount, const char* pConnectString);

    /// Lists them again: writes the names to `pNameBuff` one after another, each with its NUL, in the provider's
    /// order, the start and the length in bytes (without the NUL) of each to `ppName` and `pLen`, and finally their
    /// number to `dwCount`, before it closes the source. The caller provides buffers of the sizes that
    /// GetSchemaNameSize returned. If the last GetSchemaNameSize of this thread was for the same connection string,
    /// they are not exceeded: a source that has grown since throws DB_E_DATAOVERFLOW.
    static bool GetSchemaName(char** ppName, WORD* pLen, char* pNameBuff, DWORD& dwCount, const char* pConnectString);

private:
    struct SAdo;

    void InitialErrorCode();
    void InitialErrorRet();
    template <class TOpen>
    bool _TryOpen(const CSourceDataInfo* pInfo, TOpen open);
    bool _OpenConnection(const CSourceDataInfo& info);
    bool _OpenRecordset(const CSourceDataInfo& info);
    void _StoreNullRow();
    void _StoreRow();
    std::string_view _ConvertField(DWORD dwField);
    std::size_t _StoreField(DWORD dwField, std::size_t offset, std::string_view text, std::size_t countedNul);

    DWORD m_dwMaxFieldSize;
    DWORD m_dwMaxLineSize;
    DWORD m_dwMaxFieldCnt;
    std::unique_ptr<SAdo> m_pAdo; ///< the apartment and, in it, record set and connection
    DWORD m_dwFieldCnt = 0;       ///< columns of the open record set
    DWORD m_dwMaxRowNum = 0;
    DWORD m_dwReadRowCnt = 0;
    std::unique_ptr<char[]> m_pFieldBuff; ///< dwMaxFieldSize + 1 bytes: one value while it is truncated and cleaned
    std::unique_ptr<char[]> m_pLineBuff;  ///< dwMaxLineSize + 1 bytes: the texts of a row, each with a NUL
    std::unique_ptr<const char*[]> m_ppFieldData; ///< dwMaxFieldCnt pointers into the line buffer
    std::unique_ptr<WORD[]> m_pFieldLen;          ///< dwMaxFieldCnt lengths in bytes
    DWORD m_dwErrorCode = 0;
    LONG m_hrErrorRet = 0;
    LONG m_lCutColumn = -1;
    bool m_bKeepLineEnds = false;
};

} // namespace NSTQ::NSTQCore
