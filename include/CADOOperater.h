// CADOOperater: the reader of workbooks and databases, and the listing of their sheets and tables.
//
// Rows come as IDataAccess says. Each value is turned into text in the ANSI code page: texts as they are, other types
// as the user's locale writes them, a missing value empty; characters that the page does not have become '?'. The
// text is cut to dwMaxFieldSize bytes, never inside a character. Then leading blanks and control bytes are dropped, a
// TAB becomes a space, other control bytes vanish, and trailing spaces go, except those that a TAB became or that
// stand before one. All texts of a row stand in one line buffer; reading allocates nothing for a row or a cell.
//
// With CSourceDataInfo::SetKeepLineEnds the bytes CR and LF are content and stay as they are, anywhere in a value,
// and a text is cleaned before it is cut, so that only what is handed out takes room. Names are not concerned.
//
// Failures: FileOpen and FileClose report them as false; after FileOpen GetErrorRet gives the HRESULT and
// GetErrorDescription the reason in words, and GetErrorCode is always 0. HasNextLineData, GetLineData and
// GetFieldsName raise Platform::_com_error, and so do the constructor and the listing. A host that reads such sources
// has to be ready for it, also through CDataAccess. No row is passed over: after a failed GetLineData the next call
// fails in the same way as long as the cause is there.
//
// Limits, where they are not those of IDataAccess:
//   columns  a sheet or table with more than dwMaxFieldCnt columns is refused: FileOpen gives false and GetErrorRet
//            DB_E_DATAOVERFLOW (0x80040E57)
//   row      texts that with their NULs need more than dwMaxLineSize + 1 bytes raise DB_E_DATAOVERFLOW, and so does
//            a column name of more than dwMaxFieldSize + 1 bytes; nothing is written past a buffer
//   sizes    a dwMaxLineSize or dwMaxFieldSize above 65535 is taken as 65535, because lengths have 16 bits
//
// COM: the constructor enters the single-threaded apartment of its thread, the destructor leaves it (also when the
// constructor fails); each listing does so around itself. One thread constructs, uses and destroys a reader, and it
// must not have entered a multithreaded apartment. Different readers are independent.
#pragma once

#include "IDataAccess.h"

#include <cstddef>
#include <memory>

namespace NSTQ::NSTQCore {

class TQCACCESS_API CADOOperater : public IDataAccess {
public:
    /// Throws _com_error of tqcAccess/ComError.h (E_POINTER when there is no record set object) or std::bad_alloc.
    CADOOperater(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize);
    /// Closes what is open, whatever that gives.
    ~CADOOperater() override;
    CADOOperater(const CADOOperater&) = delete;
    CADOOperater& operator=(const CADOOperater&) = delete;

    /// Opens the source and the chosen sheet or table of a description on which SetSelectSchemaIndx has succeeded;
    /// once for each reader. The first row is the source's first; the description's start row and character set play
    /// no part. False, with what GetErrorRet says: the HRESULT of the open that failed, or 0 when the description
    /// has no connection or no record-set string. Raises nothing.
    bool FileOpen(const CSourceDataInfo* pInfo) override;

    /// Opens another sheet or table of the source that FileOpen has opened, or whose chosen one it could not open:
    /// the one that is chosen now. The source itself is not opened again, so that the sheets of one that takes long
    /// to open, because it is encrypted for example, can be gone through. What was open before is closed; rows,
    /// counters and failures are those of the new one, as after FileOpen. False also when the source is not open.
    bool OpenTable(const CSourceDataInfo* pInfo);

    /// Closes record set and connection. False when one of them is not open or does not close; a record set that does
    /// not close leaves the connection open. Counters and codes stay as they are. Raises nothing.
    bool FileClose();

    /// True until the last row has been read.
    bool HasNextLineData() override;

    /// False at the end of the data. On false and on an exception the three parameters are not written. `dwCount` is
    /// the number of columns, which is never above dwMaxFieldCnt.
    bool GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount) override;

    /// Which column of the last row read, counted from 0, is the first whose value was cut so that more than blanks
    /// and control bytes is missing; -1 when none is. The values behind it may be cut as well.
    LONG GetCutColumn() const;

    /// The column names, in the form and the buffers of a row, but each length counts the NUL too, and leading blanks
    /// stay. Moves nothing; overwrites the row that was handed out before. 0 columns before FileOpen.
    bool GetFieldsName(const char**& ppData, const WORD*& pLen, DWORD& dwCount);

    /// This reader does not move: always false. GetErrorRet is 0 and GetErrorDescription empty afterwards.
    bool MoveFileBegin() override;
    bool MoveFileEnd() override;
    /// Always false; the parameters are not written.
    bool GetSpecificLineData(DWORD dwLine, const char**& ppData, const WORD*& pLen, DWORD& dwCount) override;

    /// Always 0.
    DWORD GetErrorCode() override;
    /// The HRESULT of the last open that FileOpen made; 0 when it succeeded.
    LONG GetErrorRet();
    /// Why the last FileOpen failed, as the provider says it: what is wrong and where, such as "book.xlsx:
    /// xl/worksheets/sheet1.xml: ...". Text in the ANSI code page, never null; empty when FileOpen succeeded, when
    /// the description had no string for it, and when memory ran out. The reader owns it; it stays valid until the
    /// next FileOpen, MoveFileBegin, MoveFileEnd or GetSpecificLineData, or the reader's end.
    const char* GetErrorDescription();

    /// Rows read in thousandths of all rows; 0 when there are none.
    int GetReadPosition() override;
    /// The number of rows; 0 before FileOpen.
    DWORD GetMaxRowNum();
    /// The number of columns; 0 before FileOpen. It needs no buffer, so it is there even for a sheet whose names or
    /// rows do not fit one.
    DWORD GetFieldCnt();

    /// Lists the sheets and tables of a source: `dwCount` is their number, `dwSize` the bytes of all their names with
    /// one NUL after each. Always true; every failure raises _com_error. Both are untouched when the source cannot be
    /// opened and hold what was counted so far when the listing breaks off.
    static bool GetSchemaNameSize(DWORD& dwSize, DWORD& dwCount, const char* pConnectString);

    /// Lists them again: the names go into `pNameBuff` one after another, each with its NUL, in the provider's order;
    /// `ppName` and `pLen` get each name's start and its length in bytes without the NUL; `dwCount` is
    /// their number, written once all names are, before the source is closed. The caller provides what
    /// GetSchemaNameSize told. When this thread's last GetSchemaNameSize was for the same connection string, the room
    /// that it told is kept to: a source that has grown since raises DB_E_DATAOVERFLOW, with nothing written past it.
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
    std::size_t _StoreField(DWORD dwField, std::size_t offset, std::size_t length, std::size_t countedNul);

    DWORD m_dwMaxFieldSize;
    DWORD m_dwMaxLineSize;
    DWORD m_dwMaxFieldCnt;
    std::unique_ptr<SAdo> m_pAdo; ///< the apartment and, in it, record set and connection
    DWORD m_dwFieldCnt = 0;       ///< columns of the open record set
    DWORD m_dwMaxRowNum = 0;
    DWORD m_dwReadRowCnt = 0;
    std::unique_ptr<char[]> m_pFieldBuff;         ///< dwMaxFieldSize + 1 bytes: one value while it is cut and cleaned
    std::unique_ptr<char[]> m_pLineBuff;          ///< dwMaxLineSize + 1 bytes: the texts of a row, each with a NUL
    std::unique_ptr<const char*[]> m_ppFieldData; ///< dwMaxFieldCnt pointers into the line buffer
    std::unique_ptr<WORD[]> m_pFieldLen;          ///< dwMaxFieldCnt lengths in bytes
    DWORD m_dwErrorCode = 0;
    LONG m_hrErrorRet = 0;
    LONG m_lCutColumn = -1;
    bool m_bKeepLineEnds = false;
};

} // namespace NSTQ::NSTQCore
