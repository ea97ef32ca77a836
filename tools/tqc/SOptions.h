// The options of the command line, validated.
#pragma once

#include "CColumnList.h"
#include "CSourceDataInfo.h"
#include "SCTextEncodings.h"
#include "SCTextProbe.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace NSTQ::Tool {

using NSTQCore::CSourceDataInfo;
using NSTQCore::SCDataAccessDefine;
using NSTQCore::SCDeclareConstant;
using NSTQCore::SCTextProbe;
using NSTQCore::SLineEnd;

/// The maximum of 16-bit lengths; also the default.
inline constexpr DWORD maxLength = 65535;

struct SOptions {
    enum class ECommand { Convert, Info, Preview, List };

    /// How an invalid row is handled.
    enum class EOnError {
        Keep, ///< it is truncated and written
        Stop, ///< it ends the conversion
        Skip  ///< it is left out
    };

    /// What is written.
    enum class EFormat { Csv, JsonLines, Sqlite };

    /// How bytes are written as text.
    enum class EBinary {
        Hex, ///< 0x and two digits for each
        Base64,
        Omit ///< not at all: the value is missing
    };

    static constexpr unsigned maxJobs = 256;

    ECommand command = ECommand::Convert;
    std::vector<std::string> files; ///< as given; "-" is standard input
    std::string output;             ///< empty for standard output
    std::string outputFolder;       ///< for one output for each input; else empty
    unsigned jobs = 1;              ///< how many inputs are converted at the same time

    std::optional<SCDeclareConstant::ESourceFileType> type;
    std::optional<char> separator;
    std::optional<SLineEnd> lineEnd;
    std::optional<STextEncoding> encoding; ///< that text is converted from before it is read
    CSourceDataInfo::EReadCharSet charSet = CSourceDataInfo::RCS_AUTO;
    unsigned codePage = 0;        ///< of the source, unless that is UTF-8
    bool isEncodingGiven = false; ///< the options give the encoding or the code page
    std::vector<WORD> widths;     ///< of the columns of fixed-length text
    std::string sheet;            ///< its name, a pattern or, counted from 1, its number; the first when empty
    bool allTables = false;       ///< all sheets or tables
    bool header = false;
    std::string passwordFile;
    int passwordDescriptor = -1;
    bool quoteNewLine = true;

    CColumnList columns;         ///< that are written, in this order; empty for all
    CColumnList excludedColumns; ///< that are not
    bool SelectsColumns() const { return !columns.IsEmpty() || !excludedColumns.IsEmpty(); }

    DWORD maxFields = maxLength;
    DWORD maxLineSize = maxLength;
    DWORD maxFieldSize = maxLength;
    std::uint64_t skip = 0;     ///< lines of text, or rows of a sheet, before the header row
    std::uint64_t skipRows = 0; ///< rows after it
    std::uint64_t limit = std::numeric_limits<std::uint64_t>::max();

    EFormat format = EFormat::Csv;
    std::optional<EBinary> binary; ///< none for the default of the format
    bool hasDateForm = false;      ///< an option gives the form of dates or times
    std::string dateFormat;        ///< these as in Platform::SUserLocale; empty for its default
    std::string timeFormat;
    char decimalSign = '.';
    std::string trueText = "-1";
    std::string falseText = "0";
    std::string nullText;

    char outputSeparator = SCDataAccessDefine::CAMMA_CODE;
    SLineEnd outputLineEnd;
    unsigned outputCodePage = 0;
    EOnError onError = EOnError::Keep;
    std::string rejects; ///< the file for rejected rows; empty for none
    bool formulaGuard = false;
    bool fullNumbers = false; ///< else 15 digits
    bool strict = false;
    bool addBom = false;
    bool quiet = false;

    bool json = false;
    bool namesOnly = false; ///< a listing for completion, which must not ask for a password
};

} // namespace NSTQ::Tool
