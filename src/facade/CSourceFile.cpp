#include "CSourceFile.h"

#include "CFault.h"
#include "platform/automation/Bstr.h"
#include "platform/automation/WipeMemory.h"
#include "platform/codepage/AsciiCase.h"
#include "platform/files/CFileHandle.h"
#include "tqcAccess/CodePage.h"
#include "tqcAccess/CodePageNames.h"
#include "tqcAccess/ErrorText.h"

#include <algorithm>
#include <cstdint>
#include <new>

namespace NSTQ::NSTQCore {

using namespace NSTQ::Platform;
using namespace std::string_view_literals;

namespace {

constexpr std::uint64_t maxRowSize = 65535;

/// By extension.
struct SExtension {
    std::string_view extension;
    tqc_type type;
};
constexpr SExtension extensions[] = {{".csv", TQC_CSV},     {".tsv", TQC_TSV},   {".xls", TQC_XLS},
                                     {".xlsx", TQC_XLSX},   {".xlsm", TQC_XLSX}, {".mdb", TQC_MDB},
                                     {".accdb", TQC_ACCDB}, {".xtqf", TQC_XTQF}};

/// First bytes of what is not text. A workbook or database is opened by what it is, whatever its extension.
struct SMark {
    std::string_view mark;
    tqc_type type;
};
constexpr SMark marks[] = {
    {"PK\x03\x04"sv, TQC_XLSX},
    {"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv, TQC_XLS},
    {"\0\1\0\0Standard Jet DB"sv, TQC_MDB},
    {"\0\1\0\0Standard ACE DB"sv, TQC_ACCDB},
    {"\x09\x00\x04\x00"sv, TQC_XLS},
    {"\x09\x02\x06\x00"sv, TQC_XLS},
    {"\x09\x04\x06\x00"sv, TQC_XLS},
    {"\x09\x08\x08\x00"sv, TQC_XLS},
    {"\x09\x08\x10\x00"sv, TQC_XLS},
};

tqc_type FindByExtension(std::string_view path) {
    const std::size_t dot = path.rfind('.');
    const std::string_view extension = dot == std::string_view::npos ? "" : path.substr(dot);
    for (const SExtension& entry : extensions)
        if (IsEqualIgnoringCase(extension, entry.extension))
            return entry.type;
    return TQC_AUTO;
}

bool IsBinary(tqc_type type) {
    return type >= TQC_XLS;
}

[[noreturn]] void FailWithCode(DWORD code) {
    const bool isMissing = code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND ||
                           code == ERROR_ACCESS_DENIED || code == ERROR_INVALID_NAME ||
                           code == ERROR_FILENAME_EXCED_RANGE || code == ERROR_BUFFER_OVERFLOW;
    throw CFault(isMissing ? TQC_NOT_FOUND : TQC_IO, GetErrorText(code), static_cast<std::int32_t>(code));
}

/// The name of a worksheet: without the final '$', quotes around it and doubled ones in it. Empty for other names of
/// a workbook.
std::string MakeSheetName(std::string name) {
    const bool isQuoted = name.size() >= 4 && name.front() == '\'' && name.ends_with("$'");
    if (!isQuoted && !name.ends_with('$'))
        return {};
    name = isQuoted ? name.substr(1, name.size() - 3) : name.substr(0, name.size() - 1);
    for (std::size_t at = name.find("''"); at != std::string::npos; at = name.find("''", at + 1))
        name.erase(at, 1);
    return name;
}

} // namespace

CSourceFile::CSourceFile(const std::string& path, const tqc_options& options, unsigned ansiCodePage)
    : m_path(path), m_hasHeader(options.no_header == 0), m_replacesInvalid(options.replace_invalid != 0),
      m_separator(options.separator), m_widths(options.widths, options.widths + options.width_count),
      m_codePage(CP_UTF8) {
    const std::string head = ReadHead(path.c_str());
    m_type = options.type != TQC_AUTO ? options.type : FindType(head);
    const char* const passWord = options.password == nullptr ? "" : options.password;
    if (m_type == TQC_XTQF)
        OpenText(Unpack(passWord), options, ansiCodePage);
    else if (IsText())
        OpenText(head, options, ansiCodePage);
    else
        OpenTables(passWord, options.read_ahead != 0);
}

std::string CSourceFile::ReadHead(const char* path) {
    const CFileHandle file(CreateFileA(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                       FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!file.IsOpen())
        FailWithCode(GetLastError());
    std::string head(SCDataAccessDefine::READ_BUFF_SIZE, '\0');
    DWORD size = 0;
    if (!ReadFileWhole(file.Get(), head.data(), static_cast<DWORD>(head.size()), &size))
        FailWithCode(GetLastError());
    head.resize(size);
    return head;
}

tqc_type CSourceFile::FindType(std::string_view head) const {
    const tqc_type byExtension = FindByExtension(m_path);
    const auto* const found =
        std::ranges::find_if(marks, [head](const SMark& entry) { return head.starts_with(entry.mark); });
    if (found != std::end(marks))
        return byExtension == TQC_XTQF || (byExtension == TQC_XLSX && found->type == TQC_XLS) ? byExtension
                                                                                              : found->type;
    if (IsBinary(byExtension))
        return byExtension;
    if (SCTextProbe::HasUtf16Bom(head))
        throw CFault(TQC_UNSUPPORTED, "UTF-16 text; convert it to UTF-8");
    if (head.find('\0') != std::string_view::npos)
        throw CFault(TQC_UNSUPPORTED, "it contains NUL bytes and is no workbook, database or package; give a type of "
                                      "text to read it nevertheless");
    if (byExtension != TQC_AUTO)
        return byExtension;
    const auto lineEnd = SCTextProbe::FindLineEnd(head, GetSeparator());
    const bool isTabbed = m_separator == 0 && SCTextProbe::FindType(head, lineEnd) == SCDeclareConstant::SFT_TXT;
    return isTabbed ? TQC_TSV : TQC_CSV;
}

char CSourceFile::GetSeparator() const {
    if (m_separator != 0)
        return m_separator;
    return m_type == TQC_TSV ? SCDataAccessDefine::TAB_CODE : SCDataAccessDefine::CAMMA_CODE;
}

void CSourceFile::OpenText(std::string_view head, const tqc_options& options, unsigned ansiCodePage) {
    if (m_type == TQC_FIXED && m_widths.empty())
        throw CFault(TQC_INVALID_ARGUMENT, "fixed-length text needs the widths of its columns");
    const bool isGiven = options.encoding != nullptr;
    if (isGiven)
        m_codePage = FindCodePage(options.encoding);
    else if (!SCTextProbe::HasUtf8Bom(head) && !SCTextProbe::IsUtf8(head))
        m_codePage = ansiCodePage;
    if (m_codePage == 0)
        throw CFault(TQC_INVALID_ARGUMENT, std::string("unknown encoding \"") + options.encoding + "\"");
    m_lineEnd = SCTextProbe::FindLineEnd(head, GetSeparator());
    m_hasLineEnds = SCTextProbe::HasLineEnd(head, m_lineEnd);
    m_isOnlyBom =
        m_codePage == CP_UTF8 && head.size() == sizeof SCDataAccessDefine::BOM_UTF8 && SCTextProbe::HasUtf8Bom(head);
    m_tables.resize(1);
    if (!m_info) {
        m_info = std::make_unique<CSourceDataInfo>();
        m_info->SetCommonInfo(m_path.c_str(), SCDeclareConstant::SFT_UNKNOWN);
        auto type = SCDeclareConstant::SFT_UNKNOWN;
        // With the extension of a package the readers would open its unpacked data file.
        if (m_info->GetSourceFileType(type) && type == SCDeclareConstant::SFT_XTQF)
            m_info->SetXtqfSourceFilePath(m_path.c_str());
    }
    if (const char* path = nullptr; !m_info->GetFilePath(path))
        FailWithCode(ERROR_FILENAME_EXCED_RANGE);
    m_info->SetDelimiter(m_lineEnd.first, m_lineEnd.second);
    m_info->SetKeepLineEnds(options.quotes_end_at_line == 0);
    // Text in UTF-8 is read in that page, without conversion; then a BOM is skipped, as when the set is detected.
    m_info->SetReadCharSet(m_codePage == CP_UTF8 ? CSourceDataInfo::RCS_AUTO : CSourceDataInfo::RCS_ANSI);
    std::vector<WORD> layout = m_widths;
    std::uint64_t size = layout.size();
    for (const WORD width : layout)
        size += width;
    if (size >= maxRowSize)
        throw CFault(TQC_LIMIT, "the widths of the columns and their number make more than 65534 together");
    // One more column shows what a line has after the last one.
    if (m_hasLineEnds)
        layout.push_back(static_cast<WORD>(maxRowSize - size));
    m_info->SetFixColLen(layout);
}

std::string CSourceFile::Unpack(const char* passWord) {
    m_info = std::make_unique<CSourceDataInfo>();
    m_info->SetCommonInfo(m_path.c_str(), SCDeclareConstant::SFT_XTQF);
    auto type = SCDeclareConstant::SFT_UNKNOWN;
    if (!m_info->GetSourceFileType(type) || type != SCDeclareConstant::SFT_XTQF)
        throw CFault(TQC_UNSUPPORTED, "a package must have the extension xtqf and a path of at most 260 bytes");
    if (!m_info->SetPassWordString(passWord))
        throw CFault(TQC_INVALID_ARGUMENT, "the password has 260 bytes or more");
    const auto result = m_info->PrepareReadSourceData(true);
    if (result == CSourceDataInfo::SDO_EXCEPTION)
        throw std::bad_alloc();
    const char* path = nullptr;
    if (result != CSourceDataInfo::SDO_PACKAGE || !m_info->GetFilePath(path)) {
        const DWORD code = m_info->GetErrorCode();
        if (code == ERROR_CRC || code == ERROR_INVALID_PASSWORD)
            throw CFault(TQC_PASSWORD,
                         code == ERROR_CRC ? "the password is wrong, or the package is damaged"
                                           : "the password is missing or wrong",
                         static_cast<std::int32_t>(code));
        const bool isInvalid =
            code == ERROR_INVALID_DATA || code == ERROR_NOT_SUPPORTED || code == ERROR_FILE_CORRUPT;
        throw CFault(isInvalid ? TQC_UNSUPPORTED : TQC_IO,
                     isInvalid ? "the package is damaged, or contains what is not allowed or not supported"
                               : "the package cannot be unpacked: " + GetErrorText(code),
                     static_cast<std::int32_t>(code));
    }
    return ReadHead(path);
}

void CSourceFile::OpenTables(const char* passWord, bool readsAhead) {
    SSourceOptions options;
    options.path = m_path;
    options.passWord = passWord;
    options.hasHeaderRow = m_hasHeader;
    options.isWorkbook = IsWorkbook();
    options.readsAhead = readsAhead;
    m_data = OpenSource(options);
    WipeMemory(options.passWord.data(), options.passWord.size());
    for (const STableSchema& schema : m_data->ListTables()) {
        if (schema.type != u"TABLE" && schema.type != u"VIEW")
            continue;
        const std::string listed = AnsiFromWide(schema.name);
        std::string name = IsWorkbook() ? MakeSheetName(listed) : listed;
        if (!name.empty())
            m_tables.push_back({std::move(name), schema.name});
    }
}

} // namespace NSTQ::NSTQCore
