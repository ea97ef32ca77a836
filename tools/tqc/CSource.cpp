#include "CSource.h"

#include "CCsvSourceReader.h"
#include "CDescriptor.h"
#include "CFailure.h"
#include "CFixSourceReader.h"
#include "SCCodePageNames.h"
#include "SCContentProbe.h"
#include "SCEncodingGuess.h"
#include "SCErrorText.h"
#include "SCNameMatch.h"
#include "SCPassWord.h"
#include "SCPathText.h"
#include "SCSignals.h"
#include "SCTextProbe.h"
#include "SCTypeNames.h"
#include "tqcAccess/CodePage.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>

namespace NSTQ::Tool {
namespace {

/// Reads until the text is full or the file ends. False on an error.
bool FillFrom(int descriptor, std::string& text) {
    std::size_t size = 0;
    while (size < text.size()) {
        const ssize_t got = CDescriptor::Read(descriptor, text.data() + size, text.size() - size);
        if (got < 0)
            return false;
        if (got == 0)
            break;
        size += static_cast<std::size_t>(got);
    }
    text.resize(size);
    return true;
}

/// What keeps a package from being unpacked; without a text what the system fails with.
struct SPackageFault {
    DWORD code;
    EExitStatus status;
    const char* text;
};

/// The traditional encryption cannot tell which of both it is.
constexpr DWORD PACKAGE_UNCLEAR = 23;

constexpr SPackageFault PACKAGE_FAULTS[] = {
    {13, ES_UNSUPPORTED, "it holds names, links or sizes that are never unpacked"},
    {PACKAGE_UNCLEAR, ES_PASSWORD, "the password is wrong, or the package is damaged"},
    {50, ES_UNSUPPORTED, "its compression or encryption is of an unknown kind"},
    {86, ES_PASSWORD, "the password is wrong"},
    {1392, ES_UNSUPPORTED, "the package is damaged"},
    {0, ES_OUTPUT_FAILED, nullptr},
};

const SPackageFault& FindPackageFault(DWORD code) {
    return *std::find_if(std::begin(PACKAGE_FAULTS), std::end(PACKAGE_FAULTS) - 1,
                         [code](const SPackageFault& fault) { return fault.code == code; });
}

std::string Join(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list;
}

} // namespace

CSource::CSource(const SOptions& options) : m_options(options), m_strDataPath(options.strPath) {
    if (IsStream())
        ReadHead(options.iStream);
    else
        ReadHead(options.strPath);
    // What the file is does not depend on the code page, but the code page on what it is.
    Platform::SetAnsiCodePage(Platform::CP_UTF8);
    FindLineEnd();
    FindType();
    if (!m_options.type && !IsDatabase() && m_eType != SCDeclareConstant::SFT_XTQF)
        if (const std::string other = SCContentProbe::DescribeOther(options.strFile, m_strHead); !other.empty())
            throw CFailure(ES_UNSUPPORTED, options.strFile, other);
    SettleCodePage();
    if (Platform::GetAnsiCodePage() != Platform::CP_UTF8)
        FindType();
    m_uPathPage = Platform::GetAnsiCodePage();
}

/// A package's data may have settled another code page than the one that the path of its folder is in.
CSource::~CSource() {
    Platform::SetAnsiCodePage(m_uPathPage);
}

/// UTF-8 and the Unicode of workbooks are read as they stand, which keeps everything; their rows are encoded when
/// they are written.
void CSource::SettleCodePage() {
    const bool hasMark = m_options.eCharSet == CSourceDataInfo::RCS_AUTO && SCTextProbe::HasUtf8Mark(m_strHead);
    const bool isUtf8 = hasMark || IsDatabase() || m_options.eCharSet == CSourceDataInfo::RCS_UTF8;
    Platform::SetAnsiCodePage(isUtf8 ? Platform::CP_UTF8 : m_options.uCodePage);
}

void CSource::FindLineEnd() {
    m_lineEnd =
        m_options.lineEnd
            ? *m_options.lineEnd
            : SCTextProbe::FindLineEnd(m_strHead, m_options.separator.value_or(SCDataAccessDefine::CAMMA_CODE));
    m_info.SetDelimiter(m_lineEnd.cPre, m_lineEnd.cPost);
}

void CSource::ReadHead(const std::string& path) {
    const CDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (file.Get() < 0)
        throw CFailure(ES_NOT_FOUND, m_options.strFile, SCErrorText::OfSystem(errno));
    ReadHead(file.Get());
}

/// All of it, also when a pipe delivers it in pieces: what it tells must not depend on them.
void CSource::ReadHead(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0)
        throw CFailure(ES_NOT_FOUND, m_options.strFile, SCErrorText::OfSystem(errno));
    if (S_ISDIR(status.st_mode))
        throw CFailure(ES_NOT_FOUND, m_options.strFile, "a folder; give a file in it");
    m_status = status;
    m_strHead.resize(SCDataAccessDefine::READ_BUFF_SIZE);
    if (!FillFrom(descriptor, m_strHead))
        throw CFailure(ES_UNSUPPORTED, m_options.strFile, "cannot be read: " + SCErrorText::OfSystem(errno));
    m_bHeadIsAll = m_strHead.size() < SCDataAccessDefine::READ_BUFF_SIZE;
}

/// The library decides by the extension and by a first line that ends in CR LF; other line ends are looked at here.
void CSource::FindType() {
    if (IsStream())
        m_eType = SCTypeNames::OfFile(m_options.strFile);
    else
        DescribeFile();
    if (m_options.type) {
        m_eType = *m_options.type;
    } else if (m_eType == SCDeclareConstant::SFT_UNKNOWN || m_eType == SCDeclareConstant::SFT_FIX) {
        const auto sniffed = SCTextProbe::FindType(m_strHead, m_lineEnd);
        if (sniffed != SCDeclareConstant::SFT_UNKNOWN)
            m_eType = sniffed;
        else if (m_options.separator || m_strHead.empty())
            m_eType = SCDeclareConstant::SFT_CSV;
    }
}

void CSource::DescribeFile() {
    const std::string path = SCPathText::ToLibrary(m_options.strPath);
    m_info.SetCommonInfo(path.c_str(), m_options.type.value_or(SCDeclareConstant::SFT_UNKNOWN));
    m_info.GetSourceFileType(m_eType);
    // A package's reader would ask for its unpacked data file; under another type it is read as it stands.
    if (m_options.type && m_eType == SCDeclareConstant::SFT_XTQF)
        m_info.SetXtqfSourceFilePath(path.c_str());
}

bool CSource::IsDatabase() const {
    return m_eType >= SCDeclareConstant::SFT_XLS && m_eType <= SCDeclareConstant::SFT_ACCDB;
}

bool CSource::NamesItsColumns() const {
    return m_eType == SCDeclareConstant::SFT_MDB || m_eType == SCDeclareConstant::SFT_ACCDB;
}

bool CSource::IsDelimited() const {
    return m_eType == SCDeclareConstant::SFT_CSV || m_eType == SCDeclareConstant::SFT_TXT;
}

void CSource::CheckReadable() const {
    const std::string& path = m_options.strFile;
    if (m_eType == SCDeclareConstant::SFT_UNKNOWN)
        throw CFailure(ES_UNSUPPORTED, path,
                       "unknown type: neither TAB nor comma in its first line; give --type, "
                       "--separator or --widths; see its columns with: tqc preview " +
                           path);
    if (m_eType == SCDeclareConstant::SFT_FIX && m_options.widths.empty())
        throw CFailure(ES_UNSUPPORTED, path,
                       "fixed-length text needs --widths; see its columns with: tqc preview " + path);
    if (!m_options.strSheet.empty() && !IsDatabase())
        throw CFailure(ES_USAGE, path, "--sheet is for workbooks and databases; " + DescribeThis());
    if (SCTextProbe::HasUtf16Mark(m_strHead))
        throw CFailure(ES_UNSUPPORTED, path, "UTF-16 text; convert it with: iconv -f UTF-16 -t UTF-8");
}

std::unique_ptr<ISourceReader> CSource::OpenReader() {
    CheckReadable();
    if (m_eType == SCDeclareConstant::SFT_FIX)
        return OpenFixedLength();
    if (IsDatabase()) {
        PrepareDatabase(true);
        return OpenTable();
    }
    if (m_eType == SCDeclareConstant::SFT_XTQF)
        Unpack(true);
    return OpenDelimited();
}

/// Prepares the source; asks for its password, where that is allowed, when it needs one.
CSourceDataInfo::ESourceDataOpen CSource::Prepare(bool bMayAsk) {
    constexpr int attemptsMax = 3;
    auto password = SCPassWord::FromOptions(m_options);
    const bool isGiven = password.has_value();
    auto result = CSourceDataInfo::SDO_PASSWORD_ERROR;
    for (int attempt = 0; result == CSourceDataInfo::SDO_PASSWORD_ERROR && attempt <= attemptsMax; ++attempt) {
        if (attempt > 0 && !IsLocked())
            break;
        if (attempt > 0 && bMayAsk && !isGiven)
            password = SCPassWord::Ask(m_options.strFile, attempt > 1 ? DescribeRefusal() : "");
        if (attempt > 0 && (isGiven || !password))
            break;
        // A clone takes the folder with it that the attempt before may have left; the record only knows the last one.
        delete m_info.CreateClone();
        if (password && !m_info.SetPassWordString(password->c_str()))
            throw CFailure(ES_USAGE, m_options.strFile, "a password has at most 259 bytes");
        // Only the folder of a package must not be there without being known.
        std::optional<SCSignals::CHeld> held;
        if (!IsDatabase())
            held.emplace();
        result = m_info.PrepareReadSourceData(true);
        m_folder.Set(m_info.GetUncompressFolderPath());
    }
    return result;
}

void CSource::PrepareDatabase(bool bMayAsk) {
    if (Prepare(bMayAsk) != CSourceDataInfo::SDO_DATABASE)
        ExplainListing();
}

std::string CSource::DescribeRefusal() const {
    const bool isUnclear = !IsDatabase() && m_info.GetErrorCode() == PACKAGE_UNCLEAR;
    return isUnclear ? "Wrong password, or a damaged package.\n" : "Wrong password.\n";
}

/// Whether it may be its password that keeps a source shut: preparation gives the same result for a damaged workbook
/// or package.
bool CSource::IsLocked() const {
    if (!IsDatabase())
        return FindPackageFault(m_info.GetErrorCode()).status == ES_PASSWORD;
    try {
        ExplainListing();
    } catch (const Platform::_com_error& error) {
        return SCPassWord::IsRefusal(error);
    } catch (const CFailure&) {
        return false;
    }
}

/// Raises what made the listing of a workbook or database fail, which its preparation does not say.
void CSource::ExplainListing() const {
    const char* connection = nullptr;
    DWORD size = 0;
    DWORD count = 0;
    if (m_info.GetConnectString(connection))
        NSTQCore::CADOOperater::GetSchemaNameSize(size, count, connection);
    throw CFailure(ES_UNSUPPORTED, m_options.strFile, "cannot be read");
}

/// The names as people know them. In those of sheets the library leaves the doubled quotes of the listing.
std::vector<std::string> CSource::TableNames() const {
    std::vector<char*> listed;
    m_info.GetSchemaName(listed);
    std::vector<std::string> names(listed.begin(), listed.end());
    if (!NamesItsColumns())
        for (std::string& name : names)
            for (std::size_t at = name.find("''"); at != std::string::npos; at = name.find("''", at + 1))
                name.erase(at, 1);
    return names;
}

/// The place of the sheet or table that the options name, by its name or else by its number; none when there is no
/// such one. Throws CFailure when several could be meant.
std::optional<std::size_t> CSource::FindTable(const std::vector<std::string>& names) const {
    const std::string& wanted = m_options.strSheet;
    if (wanted.empty())
        return names.empty() ? std::nullopt : std::optional<std::size_t>(0);
    const std::vector<std::size_t> found = SCNameMatch::Find(names, wanted);
    if (found.size() > 1) {
        std::vector<std::string> meant;
        meant.reserve(found.size());
        for (const std::size_t at : found)
            meant.push_back(names[at]);
        throw CFailure(ES_NOT_FOUND, m_options.strFile,
                       "several " + std::string(TableKind()) + "s are called \"" + wanted +
                           "\" without regard to case: " + Join(meant) + "; give the name as it is written");
    }
    if (!found.empty())
        return found[0];
    std::size_t number = 0;
    const char* const end = wanted.data() + wanted.size();
    const bool isNumber = std::from_chars(wanted.data(), end, number).ptr == end;
    return isNumber && number > 0 && number <= names.size() ? std::optional(number - 1) : std::nullopt;
}

/// Chooses the sheet or table that the options name, and tells its name.
std::string CSource::SelectTable(const std::vector<std::string>& names) {
    const auto found = FindTable(names);
    if (found && m_info.SetSelectSchemaIndx(static_cast<DWORD>(*found)))
        return names[*found];
    const std::string kind = TableKind();
    throw CFailure(ES_NOT_FOUND, m_options.strFile,
                   (names.empty() ? "no " + kind + " in it"
                                  : "no " + kind + " \"" + m_options.strSheet + "\"; " + kind + "s: " + Join(names)) +
                       " (see: tqc list " + m_options.strFile + ")");
}

std::unique_ptr<CTableReader> CSource::OpenTable() {
    const std::vector<std::string> names = TableNames();
    const std::string table = SelectTable(names);
    m_info.SetKeepLineEnds(true);
    // As many columns as any sheet has; the program cuts them itself and says so.
    constexpr DWORD columnsMax = 16384;
    auto reader =
        std::make_unique<CTableReader>(std::max(columnsMax, m_options.dwMaxFields) + 1, LIMIT_MAX, LIMIT_MAX);
    if (!reader->FileOpen(&m_info))
        throw DescribeUnopened(Look(table, *reader),
                               names.size() > 1 ? "; see the others with: tqc list " + m_options.strFile : "");
    // Those of a wide sheet, which nobody asks for, need not fit a row.
    if (m_options.bHeader && NamesItsColumns())
        TakeColumnNames(*reader);
    return reader;
}

void CSource::TakeColumnNames(CTableReader& reader) {
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    reader.GetFieldsName(fields, lengths, count);
    // The lengths of names count the NUL.
    for (DWORD i = 0; i < count; ++i)
        m_vecColumns.emplace_back(fields[i], lengths[i] - 1U);
}

const char* CSource::TableKind() const {
    return NamesItsColumns() ? "table" : "sheet";
}

void CSource::CheckDatabase() const {
    if (!IsDatabase())
        throw CFailure(ES_USAGE, m_options.strFile, "list is for workbooks and databases; " + DescribeThis());
}

std::vector<std::string> CSource::ListNames() {
    CheckDatabase();
    PrepareDatabase(false);
    return TableNames();
}

std::vector<CSource::STable> CSource::ListTables() {
    CheckDatabase();
    PrepareDatabase(true);
    const std::vector<std::string> names = TableNames();
    std::vector<STable> tables;
    CTableReader reader(LIMIT_MAX, LIMIT_MAX, LIMIT_MAX);
    for (std::size_t i = 0; i < names.size(); ++i) {
        m_info.SetSelectSchemaIndx(static_cast<DWORD>(i));
        const bool isOpen = i == 0 ? reader.FileOpen(&m_info) : reader.OpenTable(&m_info);
        tables.push_back(Look(names[i], reader));
        if (isOpen)
            tables.back().size = {reader.GetMaxRowNum(), reader.GetFieldCnt()};
    }
    return tables;
}

/// A sheet or table, and why it is not open if it is not.
CSource::STable CSource::Look(const std::string& table, CTableReader& reader) {
    return {table, reader.GetErrorRet(), reader.GetErrorDescription(), std::nullopt};
}

CFailure CSource::DescribeUnopened(const STable& table, const std::string& hint) const {
    // No reason at all is given only where there is no room for one.
    const bool isTooLarge = table.error == Platform::DB_E_DATAOVERFLOW || table.error == Platform::E_OUTOFMEMORY ||
                            (table.error == Platform::S_OK && table.strReason.empty());
    std::string reason = table.strReason.empty() ? "not enough memory" : table.strReason;
    if (const std::string prefix = m_options.strPath + ": "; reason.starts_with(prefix))
        reason.erase(0, prefix.size());
    return {isTooLarge ? ES_LIMIT : ES_UNSUPPORTED, m_options.strFile,
            std::string("its ") + TableKind() + " \"" + table.strName + "\" cannot be opened: " + reason + hint};
}

/// Raises what kept a package from being unpacked.
void CSource::ExplainPackage() const {
    if (!m_strHead.starts_with("PK"))
        throw CFailure(ES_UNSUPPORTED, m_options.strFile, "not a package: it does not begin as a zip archive does");
    const SPackageFault& fault = FindPackageFault(m_info.GetErrorCode());
    const bool needsPassWord = fault.status == ES_PASSWORD && *m_info.GetPassWordString() == '\0';
    throw CFailure(fault.status, m_options.strFile,
                   needsPassWord           ? "needs a password; give it with --password-file or --password-fd"
                   : fault.text != nullptr ? std::string("cannot be unpacked: ") + fault.text
                                           : "cannot be unpacked into the temporary folder: " +
                                                 SCErrorText::OfLibrary(m_info.GetErrorCode()));
}

/// Unpacks the package and looks at the data file in it. False when that takes a password that may not be asked for.
bool CSource::Unpack(bool bMayAsk) {
    const auto result = Prepare(bMayAsk);
    if (result == CSourceDataInfo::SDO_PASSWORD_ERROR && IsLocked() && !bMayAsk && !SCPassWord::IsGiven(m_options))
        return false;
    const char* path = nullptr;
    if (result != CSourceDataInfo::SDO_PACKAGE || !m_info.GetFilePath(path))
        ExplainPackage();
    m_strDataPath = SCPathText::ToSystem(path);
    if (::access(m_strDataPath.c_str(), F_OK) != 0)
        throw CFailure(ES_UNSUPPORTED, m_options.strFile, "package without TqData/SourceFile.csv");
    ReadHead(m_strDataPath);
    FindLineEnd();
    return true;
}

bool CSource::LookIntoPackage() {
    if (!Unpack(false))
        return false;
    SettleCodePage();
    return true;
}

std::string_view CSource::Head() const {
    const bool isMark = m_options.eCharSet != CSourceDataInfo::RCS_ANSI && SCTextProbe::HasUtf8Mark(m_strHead);
    return std::string_view(m_strHead).substr(isMark ? sizeof SCDataAccessDefine::BOM_UTF8 : 0);
}

bool CSource::NeedsRuler() const {
    return m_options.widths.empty() && !SCTextProbe::HasUtf16Mark(m_strHead) &&
           (m_eType == SCDeclareConstant::SFT_FIX || m_eType == SCDeclareConstant::SFT_UNKNOWN);
}

std::unique_ptr<ISourceReader> CSource::OpenFixedLength() {
    const std::uint64_t size = CFixSourceReader::LayoutSize(m_options.widths);
    if (size > std::uint64_t{m_options.dwMaxLineSize} + 1)
        throw CFailure(ES_LIMIT, m_options.strFile,
                       "the widths of --widths and the number of columns add up to " + std::to_string(size) +
                           ", above --max-line-size");
    m_info.SetFixColLen(CFixSourceReader::LayOut(m_options.widths, SCTextProbe::HasLineEnd(m_strHead, m_lineEnd)));
    m_info.SetReadCharSet(IsStream() ? CSourceDataInfo::RCS_ANSI : m_options.eCharSet);
    auto reader = std::make_unique<CFixSourceReader>(static_cast<DWORD>(m_options.widths.size()), m_info, m_lineEnd);
    OpenFile(*reader);
    return reader;
}

std::unique_ptr<ISourceReader> CSource::OpenDelimited() {
    // What is UTF-8 is read in code page 65001, by the grammar that keeps the spaces inside fields. The automatic
    // choice skips its mark; a file too short for it holds nothing that has to be converted.
    const bool isChosenAnsi = m_options.eCharSet == CSourceDataInfo::RCS_ANSI;
    m_info.SetReadCharSet(isChosenAnsi || IsStream() ? CSourceDataInfo::RCS_ANSI : CSourceDataInfo::RCS_AUTO);
    m_info.SetKeepLineEnds(m_options.bQuoteNewLine);
    auto reader = std::make_unique<CCsvSourceReader>(m_options);
    const char separator =
        m_eType == SCDeclareConstant::SFT_TXT ? SCDataAccessDefine::TAB_CODE : SCDataAccessDefine::CAMMA_CODE;
    reader->SetSeparator(m_options.separator.value_or(separator));
    OpenFile(*reader);
    if (!isChosenAnsi && !IsStream() && Size() == 3 && SCTextProbe::HasUtf8Mark(m_strHead))
        reader->MoveFileEnd();
    reader->SetCharSet(CSourceDataInfo::RCS_ANSI);
    return reader;
}

void CSource::OpenFile(NSTQCore::VCTextFileOperater& reader) {
    reader.SetDelimiter(m_lineEnd.cPre, m_lineEnd.cPost);
    if (IsStream())
        reader.SetStream(m_bHeadIsAll ? -1 : m_options.iStream, Head().data(), static_cast<DWORD>(Head().size()));
    if (!reader.FileOpen(&m_info))
        throw CFailure(ES_NOT_FOUND, m_options.strFile, SCErrorText::OfLibrary(reader.GetErrorCode()));
    SettleCodePage();
}

FILETIME CSource::UpdateTime() const {
    FILETIME time{};
    m_info.GetUpDateDateTime(time);
    return time;
}

std::string CSource::DescribeInvalidText() const {
    const bool isDoubtful = !m_options.bEncodingGiven && !IsDatabase() && CharacterSet().strName.empty();
    return isDoubtful ? DescribeCharacterSet() : "";
}

CSource::SCharacterSet CSource::CharacterSet() const {
    if (SCTextProbe::HasUtf16Mark(m_strHead))
        return {"utf-16", true};
    if (m_options.eCharSet != CSourceDataInfo::RCS_ANSI && SCTextProbe::HasUtf8Mark(m_strHead))
        return {"utf-8", true};
    if (Platform::GetAnsiCodePage() != Platform::CP_UTF8)
        return {SCCodePageNames::NameOf(m_options.uCodePage), false};
    return {SCTextProbe::IsUtf8(m_strHead) ? "utf-8" : "", false};
}

std::string CSource::DescribeCharacterSet() const {
    const SCharacterSet set = CharacterSet();
    if (set.strName.empty())
        return SCEncodingGuess::Describe(SCTextProbe::WholeLines(m_strHead));
    if (!set.strName.starts_with("utf"))
        return "code page " + SCCodePageNames::Describe(m_options.uCodePage);
    return (set.strName == "utf-8" ? "UTF-8" : "UTF-16") + std::string(set.bMark ? " (with a mark)" : "");
}

std::string CSource::DescribeType(SCDeclareConstant::ESourceFileType type) {
    switch (type) {
    case SCDeclareConstant::SFT_XTQF:
        return "package";
    case SCDeclareConstant::SFT_CSV:
        return "comma-separated text";
    case SCDeclareConstant::SFT_TXT:
        return "tab-separated text";
    case SCDeclareConstant::SFT_FIX:
        return "fixed-length text";
    case SCDeclareConstant::SFT_XLS:
        return "Excel 2003 workbook";
    case SCDeclareConstant::SFT_MDB:
        return "Access 2003 database";
    case SCDeclareConstant::SFT_XLSX:
        return "Excel 2007 workbook";
    case SCDeclareConstant::SFT_ACCDB:
        return "Access 2007 database";
    case SCDeclareConstant::SFT_UNKNOWN:
        break;
    }
    return "unknown";
}

std::string CSource::DescribeThis() const {
    if (m_eType == SCDeclareConstant::SFT_UNKNOWN)
        return "the type of this is unknown";
    return (m_eType == SCDeclareConstant::SFT_XTQF ? "this is a " : "this is ") + DescribeType(m_eType);
}

bool CSource::IsFileOf(int descriptor) const {
    struct stat other {};
    return ::fstat(descriptor, &other) == 0 && S_ISREG(other.st_mode) && other.st_dev == m_status.st_dev &&
           other.st_ino == m_status.st_ino;
}

} // namespace NSTQ::Tool
