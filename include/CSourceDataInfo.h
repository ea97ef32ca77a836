// CSourceDataInfo: what is known about one source, before and while it is read.
//
// Calling order: construct, SetCommonInfo with the path, then the options (SetCommonInfo clears the password),
// PrepareReadSourceData, then the readers, which take the description as a constant pointer.
//
// The description owns all its texts. Pointers that it returns are valid until SetCommonInfo, a later preparation or
// the setter of the same text, or destruction; callers never free them. Destruction removes the folder that a package
// was unpacked into, with everything below it; links in it are removed and never followed.
//
// One thread fills and changes a description; readers on other threads may use the const operations when none does.
#pragma once

#include "SCDataAccessDefine.h"

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

namespace NSTQ::NSTQCore {

class TQCACCESS_API CSourceDataInfo {
public:
    /// The character set of a text source. The values are fixed.
    enum EReadCharSet : DWORD {
        RCS_AUTO = 0, ///< the text reader detects it when it opens the file
        RCS_ANSI = 1, ///< the system's ANSI code page
        RCS_UTF8 = 2  ///< UTF-8, converted to the ANSI code page
    };

    /// The result of preparation. The values are fixed.
    enum ESourceDataOpen : DWORD {
        SDO_FAILED = 0,            ///< the paths or strings needed could not be built
        SDO_TEXT_FILE = 1,         ///< delimited text or no known type; nothing was done
        SDO_FIX_FILE = 2,          ///< fixed-length text; the preview was read
        SDO_DATABASE = 3,          ///< workbook or database; its names were listed
        SDO_PACKAGE = 4,           ///< package; it was unpacked
        SDO_FILE_NOT_FOUND = 5,    ///< the preview failed: no such file
        SDO_EXCEPTION = 6,         ///< an exception other than _com_error ended preparation, such as std::bad_alloc
        SDO_PASSWORD_ERROR = 7,    ///< the password of a database is missing or wrong, or a workbook or package could
                                   ///< not be opened for any reason, also because it is missing or damaged
        SDO_ACCESS_DENIED = 8,     ///< the preview failed: access denied; or the names of a workbook or database
                                   ///< could not be listed for another reason, such as a missing database
        SDO_SHARING_VIOLATION = 9, ///< the preview failed: another program is using the file
        SDO_DISK_FULL = 10,        ///< the preview failed: disk full
        SDO_FILENAME_TOO_LONG = 11, ///< the preview failed: name too long
        SDO_READ_ERROR = 14,        ///< the preview failed for another reason
        SDO_TMPFILE_ERROR = 15      ///< the unpack folder could not be created
    };

    /// `dwFirstLineScanLimit`: the maximum of bytes in which type detection looks for the end of the first line.
    /// Throws std::bad_alloc.
    CSourceDataInfo(WORD wReserved = 256, DWORD dwFirstLineScanLimit = 4096);
    ~CSourceDataInfo();
    CSourceDataInfo(const CSourceDataInfo&) = delete;
    CSourceDataInfo& operator=(const CSourceDataInfo&) = delete;

    /// A copy with all data and options except the fixed-length preview; the caller deletes it. Both have the same
    /// unpack folder, and the first to be destroyed removes it. Throws std::bad_alloc.
    CSourceDataInfo* CreateClone() const;

    /// Resets the description and determines the update time and the type of the file at `path`, the type from the
    /// extension and for text from the first line. For "txt" files `type`, the type that the caller expects, decides
    /// between tab-separated and fixed-length text.
    /// False when the type cannot be determined; the path is kept. A null path returns false and changes nothing. A
    /// path of more than 260 bytes returns false and leaves the description reset: without path, type, update time
    /// and strings, so that an earlier source is not read instead. Delimiters, character set, the keeping of line
    /// ends, start row, widths, selection and GetIsNeedPassWord are not reset. The folder that a package was unpacked
    /// into is forgotten and stays on disk: destroy the description instead to have it removed. Throws nothing.
    bool SetCommonInfo(const char* path, SCDeclareConstant::ESourceFileType type);

    /// Does what the type of source requires before it can be read. Throws nothing.
    ///   delimited text and unknown types   nothing: SDO_TEXT_FILE
    ///   fixed-length text                  reads the preview, the first three rows
    ///   package                            unpacks it into a new private folder below the temporary folder with the
    ///                                      password; the type stays SFT_XTQF and GetFilePath then returns the
    ///                                      data file. A folder of an earlier preparation stays on disk.
    ///   workbooks and databases            lists their sheets or tables; see below
    ESourceDataOpen PrepareReadSourceData(bool bUseOffice2007Provider);

    /// Why the last preparation of a package or of fixed-length text failed; 0 after success. A Windows error code of
    /// the system, or for a package:
    ///   13    rejected: it contains names, links, sizes or numbers of files that are not allowed
    ///   23    the password is wrong or the content damaged; traditional encryption cannot distinguish them
    ///   50    unknown compression or encryption method, or the library was built without packages
    ///   86    encrypted, and the password is missing or wrong
    ///   206   the path of its data file would be too long
    ///   1392  not a zip archive, or a damaged one
    DWORD GetErrorCode() const;

    /// The path that a text reader opens: a package's data file, else the source's path. False, with `path`
    /// untouched, while there is none. It is text in the ANSI code page and may have '\' between names;
    /// Platform::ConvertToSystemPath converts it to a path for std::fopen.
    bool GetFilePath(const char*& path) const;
    /// False, with `type` unchanged, when no type is known.
    bool GetSourceFileType(SCDeclareConstant::ESourceFileType& type) const;
    /// The file's update time as of SetCommonInfo, 0 when it could not be read. Always true.
    bool GetUpDateDateTime(FILETIME& time) const;

    /// The line end of a text source; CR and LF by default. 0 as the second byte makes a line end of one byte.
    void SetDelimiter(char pre, char post);
    /// As set. Neither pointer may be null; this is not checked.
    void GetDelimiter(char* pre, char* post) const;
    /// The character set of a text source; RCS_AUTO by default.
    void SetReadCharSet(EReadCharSet charSet);
    /// As set; not what the reader has detected for RCS_AUTO.
    EReadCharSet GetReadCharSet() const;
    /// Whether the readers keep line ends within fields; by default they remove them. It applies to text in quotes of
    /// delimited text and to the values of workbooks and databases. See CCsvDataAccess and CADOOperater.
    void SetKeepLineEnds(bool bKeep);
    /// As set; false by default.
    bool GetKeepLineEnds() const;
    /// Whether CADOOperater may read the rows of an xlsx workbook ahead with a thread of its own, which decompresses
    /// and scans the sheet while the caller takes the rows. Opening a sheet and reading its rows each start one,
    /// which takes no signals and has ended when the rows have been closed, be it by FileClose, OpenTable or the
    /// destructor; while it runs, the library must not be unloaded and the process not be forked to read on in the
    /// child. Rows are the same with and without it, and so are errors, but of several faults close together in a
    /// sheet another one may be reported. Other sources, and sheets of less than 256 KB, are read without a thread.
    void SetReadAhead(bool bReadAhead);
    /// As set; false by default: the library starts no thread.
    bool GetReadAhead() const;
    /// Stored for the host; the library does not use it.
    void SetStartReadRowCnt(DWORD rows);
    /// As set; 0 by default.
    DWORD GetStartReadRowCnt() const;

    /// The preview of a prepared fixed-length file: the first three rows with their line ends, or the first 12288
    /// bytes when there are fewer line ends; NUL-terminated, `length` up to the first NUL. False before preparation,
    /// with both unchanged; empty after a failed one.
    bool GetFixFileData(const char*& data, DWORD& length) const;
    /// The column widths in bytes of fixed-length text, in column order; always true.
    bool SetFixColLen(std::vector<WORD> widths);
    /// As set; empty by default.
    const std::vector<WORD> GetFixColLen() const;
    /// Whether the preview found a line end.
    bool GetIsExistFixCRLF() const;

    /// The password for a package, workbook or database; an empty text clears it. Null and passwords of 260 bytes or
    /// more return false and keep the old one.
    bool SetPassWordString(const char* password);
    /// Never null; empty when no password was set.
    const char* GetPassWordString() const;
    /// True once the names of a database could not be listed, or those of a workbook with SDO_ACCESS_DENIED. The
    /// password is one possible cause, a missing file another; a package or workbook that needs a password does not
    /// set it. It is never cleared.
    bool GetIsNeedPassWord();
    /// Sets the data file of a package. Null changes nothing; a path of 261 bytes or more makes it empty.
    void SetXtqfSourceFilePath(const char* path);
    /// Never null; empty when nothing was unpacked.
    const char* GetUncompressFolderPath() const;

    // Workbooks and databases. Preparation builds the connection string and lists the sheets or tables; the host then
    // chooses one with SetSelectSchemaIndx and opens a reader. Only types 4 to 7 have these strings.
    // Preparation returns SDO_DATABASE; SDO_PASSWORD_ERROR when the password of a database is missing or wrong (then
    // GetIsNeedPassWord is true), or a workbook cannot be opened because of its password or because it is missing or
    // damaged; SDO_ACCESS_DENIED, with GetIsNeedPassWord true, for every other failure of the listing; SDO_EXCEPTION
    // when there is not enough memory. `bUseOffice2007Provider` selects the newer provider for xls and mdb files.

    /// Lists the names with the connection string, as preparation does. A workbook lists its worksheets, without the
    /// final '$' and without quotes; a database all its tables and views.
    /// Always true, also when the list is empty; failures throw Platform::_com_error (tqcAccess/ComError.h).
    bool SetSchemaName(SCDeclareConstant::ESourceFileType type);
    /// Copies the chosen name with its NUL to `pName`, which must have room for the longest one. False, with nothing
    /// written, when the selected index is not in the list.
    bool GetSchemaName(char* pName) const;
    /// The names in the order of the source; the texts belong to the description. A name with characters that the
    /// ANSI code page cannot represent has '?' in their place and cannot be opened. False, with `vecName` unchanged,
    /// when there are none.
    bool GetSchemaName(std::vector<char*>& vecName) const;
    /// Chooses a name and builds the record-set string for it. False, with nothing changed, for an index outside the
    /// list. A new listing keeps the index but clears the record-set string.
    bool SetSelectSchemaIndx(DWORD dwIndex);
    /// The connection string: provider, path and password unchanged. False, with the parameter unchanged, for other
    /// types and while there is none.
    bool GetConnectString(const char*& pConnectString) const;
    /// The statement that selects all rows of the chosen sheet or table, truncated to 255 bytes, which no name of a
    /// sheet reaches; a truncated one does not open. False as above.
    bool GetRecordSetString(const char*& pRecordSetString) const;

private:
    ESourceDataOpen PrepareDatabase(bool bUseOffice2007Provider);
    ESourceDataOpen GetListingError(LONG hr);
    bool CreateConnectString(const char* path, SCDeclareConstant::ESourceFileType type, bool bUseOffice2007Provider);
    bool CreateRecordSetString(const char* pName);
    bool GetDatabaseString(const std::unique_ptr<char[]>& buffer, const char*& text) const;

    static const DWORD PASSWORD_BUFFSIZE = 128;
    static const DWORD CONNECT_STRING_BUFFSIZE = 1024;
    static const DWORD RECORDSET_STRING_BUFFSIZE = 256;
    static const DWORD FIX_READ_BUFFSIZE = 64000;
    static const DWORD FIX_SHOW_ROW = 3;
    static const DWORD FIX_READAREA = 12288;

    void Initialize();
    bool IsDBSourceData(SCDeclareConstant::ESourceFileType type) const;
    void SetDataAccessErrorCode();
    bool UncompressDeleteDirectory(const char* folder);
    ESourceDataOpen PrepareFixFile();
    ESourceDataOpen PreparePackage();
    ESourceDataOpen GetCreateTmpFileErr();
    bool ReadFixFile(const char* path);
    void ScanFixRows(DWORD size);
    SCDeclareConstant::ESourceFileType FixSourceFileType(const char* path, WORD length);
    SCDeclareConstant::ESourceFileType GetTextFileType(const char* path);
    SCDeclareConstant::ESourceFileType SniffFirstLine(std::string_view bytes) const;

    WORD m_wReserved;
    DWORD m_dwFirstLineScanLimit;
    std::unique_ptr<char[]> m_pFilePath; ///< the four path and password buffers have 261 bytes
    FILETIME m_ftUpDateDateTime{};
    SCDeclareConstant::ESourceFileType m_eSourceFileType = SCDeclareConstant::SFT_UNKNOWN;
    DWORD m_dwErrorCode = 0;
    char m_cPreDelimiter = SCDataAccessDefine::CR_CODE;
    char m_cPostDelimiter = SCDataAccessDefine::LF_CODE;
    EReadCharSet m_eReadCharSet = RCS_AUTO;
    std::unique_ptr<char[]> m_pXtqfSourceFilePath;
    std::unique_ptr<char[]> m_pUncompressFolderPath;
    bool m_bIsNeedPassWord = false;
    std::unique_ptr<char[]> m_pPassWordString;
    std::unique_ptr<char[]> m_pSchemaNameBuff; ///< the sheet or table names, each with its NUL
    DWORD m_dwSchemaNameBuffSize = 0;
    std::vector<char*> m_vecSchemaName; ///< the usable names; each points into m_pSchemaNameBuff
    DWORD m_dwSelectSchemaIndx = 0;
    std::unique_ptr<char[]> m_pConnectString;
    std::unique_ptr<char[]> m_pRecordSetString;
    std::unique_ptr<char[]> m_pFixFileData;
    DWORD m_dwFixScanPos = 0;
    DWORD m_dwFixFirstRowLen = 0;
    std::vector<WORD> m_vecFixColLen;
    bool m_bIsExistFixCRLF = false;
    DWORD m_dwStartReadRowCnt = 0;
    bool m_bKeepLineEnds = false;
    bool m_bReadAhead = false;
};

static_assert(sizeof(CSourceDataInfo::EReadCharSet) == 4 && sizeof(CSourceDataInfo::ESourceDataOpen) == 4);

} // namespace NSTQ::NSTQCore
