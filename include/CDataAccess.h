// CDataAccess: the facade that creates the reader for a source, owns it and forwards to it.
//
// The description given to the constructor belongs to the caller and must outlive every FileOpen. The reader's file
// is closed when the facade is destroyed. One thread at a time. Rows are returned as IDataAccess says, in the
// reader's buffers.
//
// There is no reader for a description without a type, with a type outside the enumeration, or of a package (use a
// CCsvDataAccess for its unpacked data file): all operations of the facade then return false with error code 0.
#pragma once

#include "IDataAccess.h"

#include <memory>

namespace NSTQ::NSTQCore {

class TQCACCESS_API CDataAccess {
public:
    /// Creates the reader for the description's type and gives it the description's line end: CCsvDataAccess for
    /// comma- and tab-separated text, CFixDataAccess for fixed-length text, which copies the column widths here,
    /// CADOOperater, without the line end, for workbooks and databases, whose failures while reading are exceptions
    /// (Platform::_com_error). The description must not be null.
    /// Throws std::bad_alloc, or what the constructor of the reader throws.
    CDataAccess(DWORD dwMaxFieldCnt, DWORD dwMaxLineSize, DWORD dwMaxFieldSize, const CSourceDataInfo* pInfo);
    ~CDataAccess();
    CDataAccess(const CDataAccess&) = delete;
    CDataAccess& operator=(const CDataAccess&) = delete;

    /// Opens the source of the description. The facade keeps no HRESULT: to learn why a workbook or database does not
    /// open, use a CADOOperater instead.
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
    /// Keeps the reader's error code of a failed operation and returns the result.
    bool KeepErrorCode(bool bResult);

    std::unique_ptr<IDataAccess> m_pDataAccess;
    const CSourceDataInfo* m_pSourceDataInfo;
    DWORD m_dwErrorCode = 0;
};

} // namespace NSTQ::NSTQCore
