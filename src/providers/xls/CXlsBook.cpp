#include "providers/xls/CXlsBook.h"

#include "providers/common/CSourceError.h"
#include "providers/common/TextConversion.h"
#include "providers/encryption/Encryption.h"
#include "providers/xls/CRecordCells.h"
#include "tqcAccess/CodePage.h"

#include <array>

namespace NSTQ::Providers {

namespace {

constexpr std::uint16_t sheetStream = 0x0010;
constexpr unsigned westernPage = 1252;
constexpr unsigned romanPage = 10000;
/// The numbers of these two in files of early versions.
constexpr unsigned oldWesternPage = 0x8001;
constexpr unsigned oldRomanPage = 0x8000;

/// The code page of texts of a workbook that names none.
unsigned DefaultPage() {
    const unsigned ansi = Platform::GetAnsiCodePage();
    return ansi == Platform::CP_UTF8 ? westernPage : ansi;
}

/// Keeps ASCII; the other characters of a format code do not matter for dates.
std::string NarrowCode(std::u16string_view code) {
    std::string narrow;
    for (const char16_t unit : code)
        narrow += unit < 0x80 ? static_cast<char>(unit) : '\x80';
    return narrow;
}

[[noreturn]] void FailWithOldVersion(const char* version) {
    throw CSourceError(std::string("a workbook of Excel ") + version + ", which is not supported");
}

} // namespace

CXlsBook::CXlsBook(std::shared_ptr<IRandomAccess> stream, std::string path, const std::string& passWord)
    : m_path(std::move(path)), m_stream(std::move(stream)) {
    CRecordReader records(m_stream, nullptr, 0);
    SGlobals globals;
    ReadBegin(records);
    while (records.GetType() != ERecord::Eof) {
        ReadRecord(records, globals, passWord);
        if (!records.Next())
            throw CSourceError("the stream of the workbook ends before its sheets");
    }
    m_names = globals.names.Resolve(globals.tabs);
}

/// The first record has the version. A stream may also consist of one sheet only.
void CXlsBook::ReadBegin(CRecordReader& records) {
    if (!records.Next())
        throw CSourceError("the stream of the workbook is empty");
    if (records.GetType() == ERecord::Bof2)
        FailWithOldVersion("2.x");
    if (records.GetType() == ERecord::Bof3)
        FailWithOldVersion("3.0");
    if (records.GetType() == ERecord::Bof4)
        FailWithOldVersion("4.0");
    if (records.GetType() != ERecord::Bof)
        throw CSourceError("not a workbook: its stream does not begin with a BOF record");
    const unsigned char* const body = records.Require(4);
    const std::uint16_t version = ReadU16(body);
    // Simple export programs often omit the version.
    if (version != 0x0600 && version != 0x0500 && version != 0x0580 && version != 0)
        throw CSourceError("a workbook of an unknown version");
    m_form = {version == 0x0600 ? EBiff::Biff8 : EBiff::Biff5, DefaultPage()};
    if (ReadU16(body + 2) == sheetStream) {
        m_sheetNames.push_back(u"Sheet1");
        m_sheetPositions.push_back(0);
    }
}

void CXlsBook::ReadRecord(CRecordReader& records, SGlobals& globals, const std::string& passWord) {
    switch (records.GetType()) {
    case ERecord::FilePass:
        m_cipher = MakeRecordCipher(records.GetBody(), m_form.version == EBiff::Biff8, passWord);
        records.SetCipher(m_cipher);
        break;
    case ERecord::CodePage:
        ReadCodePage(records);
        break;
    case ERecord::DateMode:
        m_isDate1904 = ReadU16(records.Require(2)) != 0;
        break;
    case ERecord::BoundSheet:
        ReadSheet(records, globals);
        break;
    case ERecord::Format:
        ReadFormat(records);
        break;
    case ERecord::Xf:
        m_formats.AddStyle(ReadU16(records.Require(4) + 2));
        break;
    case ERecord::Sst:
        m_sharedPosition = records.GetPosition();
        break;
    case ERecord::SupBook:
        globals.names.AddSupBook(records);
        break;
    case ERecord::ExternSheet:
        globals.names.AddExternSheet(records, m_form);
        break;
    case ERecord::Name:
        globals.names.AddName(records, m_form);
        break;
    default:
        break;
    }
}

void CXlsBook::ReadCodePage(const CRecordReader& records) {
    const unsigned page = ReadU16(records.Require(2));
    switch (page) {
    case Platform::CP_ACP:
        m_form.codePage = DefaultPage();
        break;
    case oldRomanPage:
        m_form.codePage = romanPage;
        break;
    case oldWesternPage:
        m_form.codePage = westernPage;
        break;
    default:
        m_form.codePage = page;
    }
}

void CXlsBook::ReadSheet(CRecordReader& records, SGlobals& globals) {
    constexpr std::size_t headerSize = 7;
    const unsigned char* const body = records.Require(headerSize);
    const std::uint64_t position = ReadU32(body);
    const bool isWorksheet = body[5] == 0;
    globals.tabs.push_back(isWorksheet ? m_sheetNames.size() : CNameTable::noSheet);
    if (!isWorksheet)
        return;
    const std::size_t count = body[6];
    std::u16string name;
    CTextReader(records, m_form, headerSize).ReadText(count, name);
    m_sheetNames.push_back(std::move(name));
    m_sheetPositions.push_back(position);
}

void CXlsBook::ReadFormat(CRecordReader& records) {
    const std::size_t idSize = 2;
    const std::uint32_t id = ReadU16(records.Require(idSize));
    std::u16string code;
    STextForm form = m_form;
    // The part about dates is ASCII, which does not depend on the code page.
    if (!HasPageTable(form.codePage))
        form.codePage = westernPage;
    try {
        CTextReader reader(records, form, idSize);
        const std::size_t count = form.version == EBiff::Biff8 ? reader.TakeU16() : reader.TakeByte();
        reader.ReadText(count, code);
    } catch (const CSourceError&) {
        code = u"General"; // other programs do not reject the file either
    }
    m_formats.AddCode(id, NarrowCode(code));
}

std::unique_ptr<ICellSource> CXlsBook::OpenCells(std::size_t sheet) {
    ReadSharedTexts();
    const std::uint64_t position = m_sheetPositions[sheet];
    CRecordReader records(m_stream, m_cipher, position);
    return std::make_unique<CRecordCells>(std::move(records), m_form, IsBehindEnd(position));
}

/// Whether the record before that position in the stream is an EOF record.
bool CXlsBook::IsBehindEnd(std::uint64_t position) const {
    std::array<unsigned char, 4> header = {};
    if (position < header.size())
        return false;
    m_stream->ReadAt(position - header.size(), header);
    return ReadU32(header.data()) == static_cast<std::uint32_t>(ERecord::Eof);
}

/// The stated size of the table may be wrong; it is read to its end.
void CXlsBook::ReadSharedTexts() {
    if (!m_sharedPosition)
        return;
    CRecordReader records(m_stream, m_cipher, *m_sharedPosition);
    records.Next();
    constexpr std::size_t headerSize = 8;
    const std::uint32_t count = ReadU32(records.Require(headerSize) + 4);
    CTextReader reader(records, m_form, headerSize);
    CTextPool texts(m_stream->Size());
    std::u16string text;
    std::string bytes;
    while (texts.GetCount() < count && reader.HasMore()) {
        text.clear();
        reader.ReadText(reader.TakeU16(), text);
        // A single surrogate becomes U+FFFD, which every code page converts to the same character as the surrogate.
        texts.Add(ToUtf8(text, bytes));
    }
    m_sharedTexts = std::move(texts);
    m_sharedPosition.reset();
}

} // namespace NSTQ::Providers
