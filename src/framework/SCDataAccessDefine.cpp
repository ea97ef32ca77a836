#include "SCDataAccessDefine.h"

#include <string_view>

namespace NSTQ::NSTQCore {

#if defined(__clang__)
#pragma clang diagnostic ignored "-Wdollar-in-identifier-extension"
#endif

const char SCDataAccessDefine::SUB_CODE;
const char SCDataAccessDefine::TAB_CODE;
const char SCDataAccessDefine::NULL_CODE;
const char SCDataAccessDefine::SPACE_CODE;
const char SCDataAccessDefine::PERIOD_CODE;
const char SCDataAccessDefine::CAMMA_CODE;
const char SCDataAccessDefine::$_CODE;
const char SCDataAccessDefine::DOUBLE_QUOTATION;
const char SCDataAccessDefine::LF_CODE;
const char SCDataAccessDefine::CR_CODE;
const char SCDataAccessDefine::DATAFILE_SEPARATOR;

const DWORD SCDataAccessDefine::READ_BUFF_SIZE;
const DWORD SCDataAccessDefine::WRITE_BUFF_SIZE;

const unsigned char SCDataAccessDefine::BOM_UTF8[3] = {0xEF, 0xBB, 0xBF};
const unsigned char SCDataAccessDefine::BOM_UTF16LE[2] = {0xFF, 0xFE};
const unsigned char SCDataAccessDefine::BOM_UTF16BE[2] = {0xFE, 0xFF};

constexpr const char* const SCDataAccessDefine::ADODB_CONNECTION = "ADODB.Connection";
constexpr const char* const SCDataAccessDefine::ADODB_RECORDSET = "ADODB.Recordset";
constexpr const char* const SCDataAccessDefine::TABLE_NAME = "TABLE_NAME";
constexpr const char* const SCDataAccessDefine::TABLE_TYPE = "TABLE_TYPE";
constexpr const char* const SCDataAccessDefine::TABLE = "TABLE";
constexpr const char* const SCDataAccessDefine::VIEW = "VIEW";

constexpr const char* const SCDataAccessDefine::OFFICE2003_PRECONNECTSTRING =
    "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=";
constexpr const char* const SCDataAccessDefine::OFFICE2007_PRECONNECTSTRING =
    "Provider=Microsoft.ACE.OLEDB.12.0;Data Source=";
constexpr const char* const SCDataAccessDefine::EXCLE2003_POSTCONNECTSTRING =
    ";Extended Properties=\"Excel 8.0;HDR=NO;IMEX=1\"";
constexpr const char* const SCDataAccessDefine::EXCLE2007_POSTCONNECTSTRING =
    ";Extended Properties=\"Excel 12.0;HDR=NO;IMEX=1\"";
constexpr const char* const SCDataAccessDefine::ACCESS_POSTCONNECTSTRING = ";Extended Properties=\"\"";
constexpr const char* const SCDataAccessDefine::PRE_RECORDSET_STRING = "SELECT * FROM [";
constexpr const char* const SCDataAccessDefine::POST_RECORDSET_STRING = "]";
constexpr const char* const SCDataAccessDefine::STR_DOLLAR = "$";
constexpr const char* const SCDataAccessDefine::STR_SINGLE_QUOTE = "'";

constexpr const char* const SCDataAccessDefine::EXT_CSV = "csv";
constexpr const char* const SCDataAccessDefine::EXT_TXT = "txt";
constexpr const char* const SCDataAccessDefine::EXT_XLS = "xls";
constexpr const char* const SCDataAccessDefine::EXT_XLSX = "xlsx";
constexpr const char* const SCDataAccessDefine::EXT_MDB = "mdb";
constexpr const char* const SCDataAccessDefine::EXT_ACCDB = "accdb";
constexpr const char* const SCDataAccessDefine::EXT_XTQF = "xtqf";
constexpr const char* const SCDataAccessDefine::EXT_SPC = "spc";

constexpr const char* const SCDataAccessDefine::TQF_PATH_DATAFILE = "\\TqData\\SourceFile.csv";
constexpr const char* const SCDataAccessDefine::STR_UNCOMPRESS_FOLDER_PREFIX = "Core\\tqcAccess\\";

// "データファイルを読み込んでいます。"
constexpr const char* const SCDataAccessDefine::MSG_READ_SOURCEDATA =
    "\x83\x66\x81\x5B\x83\x5E\x83\x74\x83\x40\x83\x43\x83\x8B\x82\xF0\x93\xC7"
    "\x82\xDD\x8D\x9E\x82\xF1\x82\xC5\x82\xA2\x82\xDC\x82\xB7\x81\x42";

namespace {

constexpr WORD Length(const char* text) {
    return static_cast<WORD>(std::string_view(text).size());
}

} // namespace

const WORD SCDataAccessDefine::OFFICE2003_PRECONNECTSTRING_LEN = Length(OFFICE2003_PRECONNECTSTRING);
const WORD SCDataAccessDefine::OFFICE2007_PRECONNECTSTRING_LEN = Length(OFFICE2007_PRECONNECTSTRING);
const WORD SCDataAccessDefine::EXCLE2003_POSTCONNECTSTRING_LEN = Length(EXCLE2003_POSTCONNECTSTRING);
const WORD SCDataAccessDefine::EXCLE2007_POSTCONNECTSTRING_LEN = Length(EXCLE2007_POSTCONNECTSTRING);
const WORD SCDataAccessDefine::ACCESS_POSTCONNECTSTRING_LEN = Length(ACCESS_POSTCONNECTSTRING);
const WORD SCDataAccessDefine::PRE_RECORDSET_STRING_LEN = Length(PRE_RECORDSET_STRING);
const WORD SCDataAccessDefine::POST_RECORDSET_STRING_LEN = Length(POST_RECORDSET_STRING);
const DWORD SCDataAccessDefine::STRLEN_UNCOMPRESS_FOLDER_PREFIX = Length(STR_UNCOMPRESS_FOLDER_PREFIX);

} // namespace NSTQ::NSTQCore
