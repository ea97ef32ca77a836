// The constants that the library shares with its host, and the types of sources.
#pragma once

#include "tqcAccess/Export.h"
#include "tqcAccess/Types.h"

namespace NSTQ::NSTQCore {

/// Contains the enumerations of the interface.
class SCDeclareConstant {
public:
    /// The type of a source. The values are fixed.
    enum ESourceFileType : DWORD {
        SFT_XTQF = 0,  ///< the application's package: a zip archive with a comma-separated data file
        SFT_CSV = 1,   ///< comma-separated text
        SFT_TXT = 2,   ///< tab-separated text
        SFT_FIX = 3,   ///< fixed-length text
        SFT_XLS = 4,   ///< Excel 2003 workbook
        SFT_MDB = 5,   ///< Access 2003 database
        SFT_XLSX = 6,  ///< Excel 2007 workbook
        SFT_ACCDB = 7, ///< Access 2007 database
        SFT_UNKNOWN = 0xFFFFFFFF
    };
};

#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdollar-in-identifier-extension"
#endif

/// The constants. Texts are NUL-terminated and live as long as the library is loaded.
class TQCACCESS_API SCDataAccessDefine {
public:
    // Single-byte codes.
    static const char SUB_CODE = 0x1A; ///< end-of-file character inside text sources
    static const char TAB_CODE = 0x09;
    static const char NULL_CODE = 0x00;
    static const char SPACE_CODE = 0x20;
    static const char PERIOD_CODE = 0x2E;
    static const char CAMMA_CODE = 0x2C; ///< the default field separator
    static const char $_CODE = 0x24;     ///< the end of a worksheet name
    static const char DOUBLE_QUOTATION = 0x22;
    static const char LF_CODE = 0x0A;
    static const char CR_CODE = 0x0D;
    static const char DATAFILE_SEPARATOR = 0x2C; ///< the separator of data files

    // Buffer sizes in bytes.
    static const DWORD READ_BUFF_SIZE = 64000;  ///< bytes of one read of a text file
    static const DWORD WRITE_BUFF_SIZE = 64000; ///< bytes of the CSV writer's buffer

    // BOMs. Those of UTF-16 are for the host; no operation of the library uses them.
    static const unsigned char BOM_UTF8[3];
    static const unsigned char BOM_UTF16LE[2];
    static const unsigned char BOM_UTF16BE[2];

    // ProgIDs and the table schema of ADO.
    static const char* const ADODB_CONNECTION;
    static const char* const ADODB_RECORDSET;
    static const char* const TABLE_NAME;
    static const char* const TABLE_TYPE;
    static const char* const TABLE;
    static const char* const VIEW;

    // Parts of connection and record-set strings.
    static const char* const OFFICE2003_PRECONNECTSTRING;
    static const char* const OFFICE2007_PRECONNECTSTRING;
    static const char* const EXCLE2003_POSTCONNECTSTRING;
    static const char* const EXCLE2007_POSTCONNECTSTRING;
    static const char* const ACCESS_POSTCONNECTSTRING;
    static const char* const PRE_RECORDSET_STRING;
    static const char* const POST_RECORDSET_STRING;
    static const char* const STR_DOLLAR;
    static const char* const STR_SINGLE_QUOTE;

    // File-name extensions, lower case, without the dot.
    static const char* const EXT_CSV;
    static const char* const EXT_TXT;
    static const char* const EXT_XLS;
    static const char* const EXT_XLSX;
    static const char* const EXT_MDB;
    static const char* const EXT_ACCDB;
    static const char* const EXT_XTQF;
    static const char* const EXT_SPC; ///< for the host; the library does not recognise it

    // Packages.
    static const char* const TQF_PATH_DATAFILE;            ///< the data file inside an unpacked package
    static const char* const STR_UNCOMPRESS_FOLDER_PREFIX; ///< sub-folder of the temporary folder

    /// A progress message for the host, in Shift_JIS; no operation of the library shows it.
    static const char* const MSG_READ_SOURCEDATA;

    // Lengths in bytes of the texts above, without their NUL.
    static const WORD OFFICE2003_PRECONNECTSTRING_LEN;
    static const WORD OFFICE2007_PRECONNECTSTRING_LEN;
    static const WORD EXCLE2003_POSTCONNECTSTRING_LEN;
    static const WORD EXCLE2007_POSTCONNECTSTRING_LEN;
    static const WORD ACCESS_POSTCONNECTSTRING_LEN;
    static const WORD PRE_RECORDSET_STRING_LEN;
    static const WORD POST_RECORDSET_STRING_LEN;
    static const DWORD STRLEN_UNCOMPRESS_FOLDER_PREFIX;
};

#if defined(__clang__)
#pragma clang diagnostic pop
#endif

static_assert(sizeof(SCDeclareConstant::ESourceFileType) == 4);

} // namespace NSTQ::NSTQCore
