// What the command line asks for, checked.
#pragma once

#include "CSourceDataInfo.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace NSTQ::Tool {

using NSTQCore::CSourceDataInfo;
using NSTQCore::SCDataAccessDefine;
using NSTQCore::SCDeclareConstant;

/// The two bytes of a line end; the second one is 0 when there is only one.
struct SLineEnd {
    char cPre = SCDataAccessDefine::CR_CODE;
    char cPost = SCDataAccessDefine::LF_CODE;

    std::string Bytes() const { return cPost == 0 ? std::string{cPre} : std::string{cPre, cPost}; }
};

/// The most that lengths of 16 bits allow; also the defaults.
inline constexpr DWORD LIMIT_MAX = 65535;

struct SOptions {
    enum ECommand { CMD_CONVERT, CMD_INFO, CMD_PREVIEW, CMD_LIST };

    /// What becomes of a row that cannot be taken whole.
    enum EOnError {
        OE_KEEP, ///< as much of it as possible is written
        OE_STOP, ///< it ends the conversion
        OE_SKIP  ///< it is left out
    };

    ECommand eCommand = CMD_CONVERT;
    std::vector<std::string> files; ///< as given; "-" is standard input
    std::string strOutput;          ///< empty for standard output
    std::string strOutputFolder;    ///< for one output for each input; else empty

    std::optional<SCDeclareConstant::ESourceFileType> type;
    std::optional<char> separator;
    std::optional<SLineEnd> lineEnd;
    CSourceDataInfo::EReadCharSet eCharSet = CSourceDataInfo::RCS_AUTO;
    unsigned uCodePage = 0;      ///< of the source, unless that is UTF-8
    bool bEncodingGiven = false; ///< the options tell the encoding or the code page
    std::vector<WORD> widths;    ///< of the columns of fixed-length text
    std::string strSheet;        ///< its name or, counted from 1, its number; the first when empty
    bool bHeader = false;
    std::string strPassWordFile;
    int iPassWordDescriptor = -1;
    bool bQuoteNewLine = true;

    DWORD dwMaxFields = LIMIT_MAX;
    DWORD dwMaxLineSize = LIMIT_MAX;
    DWORD dwMaxFieldSize = LIMIT_MAX;
    std::uint64_t ullSkip = 0;
    std::uint64_t ullLimit = std::numeric_limits<std::uint64_t>::max();

    char cOutputSeparator = SCDataAccessDefine::CAMMA_CODE;
    SLineEnd outputLineEnd;
    unsigned uOutputCodePage = 0;
    EOnError eOnError = OE_KEEP;
    std::string strRejects; ///< the file for rejected rows; empty for none
    bool bFormulaGuard = false;
    bool bFullNumbers = false; ///< else as the platform shows them, with 15 digits
    bool bStrict = false;
    bool bAddMark = false;
    bool bQuiet = false;

    bool bJson = false;
    bool bNamesOnly = false; ///< a listing for completion, which must not ask anything
};

} // namespace NSTQ::Tool
