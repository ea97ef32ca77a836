// CDataAccess: the facade that picks the reader for a source, owns it and forwards to it.
//
// The description given to the constructor stays the caller's and must outlive every FileOpen. The reader's file is
// closed when the facade is destroyed. One thread at a time. Rows are handed out as IDataAccess says, in the reader's
// buffers.
//
// No reader: a description without a type, with one outside the enumeration, or of a package (its unpacked data file
// is read with a CCsvDataAccess of the caller's) gives a facade whose operations all return false with error code 0.
#pragma once

#include "IDataAccess.h"

#include <memory>

namespace NSTQ::NSTQCore {

class TQCACCESS_API CDataAccess {
public:
    /// Creates the reader for the description's type and gives it the description's line end: CCsvDataAccess for
    /// comma- and tab-separated text, CFixDataAccess for fixed-length text, which takes the column widths here,
    /// CADOOperater, without the line end, for workbooks and databases, whose failures while reading are exceptions
    /// (Platform::_com_error). The description must not be null.
    /// Throws std::bad_alloc, or what a reader's constructor throws; no facade results then.
    CDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize, const CSourceDataInfo* pInfo);
    ~CDataAccess();
    CDataAccess(const CDataAccess&) = delete;
    CDataAccess& operator=(const CDataAccess&) = delete;

    /// Opens the source of the description. The facade keeps no HRESULT: why a workbook or database does not open is
    /// told by a CADOOperater of the caller's own.
    bool FileOpen();
    /// As the reader's; a false result leaves the error code as it was.
    bool HasNextLineData();
    /// As the reader's, also at the end of the source (see IDataAccess).
    bool GetLineData(const char**& ppData, const WORD*& pLen, DWORD& dwCount);
    /// As the reader's; a false result leaves the error code as it was.
    bool MoveFileBegin();
    /// As the reader's; a false result leaves the error code as it was.
    bool MoveFileEnd();
    /// As the reader's.
    bool GetSpecificLineData(DWORD dwLine, const char**& ppData, const WORD*& pLen, DWORD& dwCount);

    /// The reader's error code after the last FileOpen, GetLineData or GetSpecificLineData that returned false; a
    /// success does not reset it.
    DWORD GetErrorCode();

private:
    /// Keeps the reader's error code of a failed operation and passes the result on.
    bool KeepErrorCode(bool bResult);

    std::unique_ptr<IDataAccess> m_pDataAccess;
    const CSourceDataInfo* m_pSourceDataInfo;
    DWORD m_dwErrorCode = 0;
};

} // namespace NSTQ::NSTQCore
