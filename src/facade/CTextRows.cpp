#include "CTextRows.h"

#include "CCsvDataAccess.h"
#include "CFault.h"
#include "CFixDataAccess.h"
#include "platform/codepage/Transcode.h"
#include "platform/codepage/Utf8.h"
#include "tqcAccess/CodePageNames.h"
#include "tqcAccess/ErrorText.h"

#include <algorithm>
#include <cstring>

namespace NSTQ::NSTQCore {

using namespace NSTQ::Platform;

namespace {

/// The maximum of 16-bit lengths, and that of a reader's line buffer without its last NUL. A row that is not longer
/// has no more fields either.
constexpr DWORD maxSize = 65535;

} // namespace

/// A reader with what its users do not see.
class CTextRows::IReader {
public:
    virtual ~IReader() = default;
    virtual IDataAccess& Rows() = 0;
    /// The file offset of the next byte to be read.
    virtual LONGLONG GetPosition() const = 0;
    /// The byte before it; 0 at the start of a fill.
    virtual char GetLastByte() const = 0;
    /// The end of the memory that the fields of a record are stored in, one after the other and each with a NUL.
    virtual const char* GetBufferEnd() const = 0;
};

template <class TReader>
class CTextRows::CReader final : public IReader, public TReader {
public:
    using TReader::TReader;

    IDataAccess& Rows() override { return *this; }
    LONGLONG GetPosition() const override { return TReader::m_llReadOffset + TReader::GetReadBuffPos(); }
    char GetLastByte() const override {
        const DWORD position = TReader::GetReadBuffPos();
        return position == 0 ? '\0' : static_cast<char>(TReader::m_pReadBuff[position - 1]);
    }
    const char* GetBufferEnd() const override { return TReader::m_pLineBuff.get() + maxSize + 1; }
};

std::unique_ptr<CTextRows::IReader> CTextRows::Open(const CSourceFile& file) {
    const CSourceDataInfo& info = file.GetInfo();
    const auto open = [&](auto reader) {
        reader->SetSeparator(file.GetSeparator());
        reader->SetDelimiter(file.GetLineEnd().first, file.GetLineEnd().second);
        if (!reader->FileOpen(&info))
            throw CFault(TQC_IO, GetErrorText(reader->GetErrorCode()),
                         static_cast<std::int32_t>(reader->GetErrorCode()));
        reader->SetCharSet(CSourceDataInfo::RCS_ANSI);
        if (file.IsOnlyBom())
            reader->MoveFileEnd();
        return std::unique_ptr<IReader>(std::move(reader));
    };
    if (file.GetType() == TQC_FIXED)
        return open(std::make_unique<CReader<CFixDataAccess>>(maxSize, maxSize, maxSize, &info));
    return open(std::make_unique<CReader<CCsvDataAccess>>(maxSize, maxSize, maxSize));
}

CTextRows::CTextRows(std::shared_ptr<const CSourceFile> file) : m_file(std::move(file)), m_reader(Open(*m_file)) {
    m_hasFirst = ReadRow();
    if (!m_hasFirst)
        return;
    const bool hasHeader = m_file->HasHeader();
    GetTexts();
    const std::size_t count = m_file->GetType() == TQC_FIXED ? m_file->GetWidths().size() : m_fields.size();
    for (std::size_t i = 0; i < count; ++i) {
        const bool isNamed = hasHeader && i < m_fields.size() && m_fields[i].length > 0;
        m_columns.push_back(
            {isNamed ? std::string(m_fields[i].text, m_fields[i].length) : "F" + std::to_string(i + 1),
             static_cast<int>(EDataType::adVarWChar),
             {}});
    }
    m_hasFirst = !hasHeader;
}

CTextRows::~CTextRows() = default;

int CTextRows::GetProgress() const {
    return m_reader->Rows().GetReadPosition();
}

bool CTextRows::MoveNext() {
    if (!m_hasFirst)
        return ReadRow();
    m_hasFirst = false;
    return true;
}

std::string CTextRows::DescribeRow() const {
    return "row " + std::to_string(m_row);
}

/// Reads the next record that is a row. False at the end.
bool CTextRows::ReadRecord(SRecord& record) {
    IDataAccess& rows = m_reader->Rows();
    while (rows.HasNextLineData()) {
        const char** fields = nullptr;
        const LONGLONG start = m_reader->GetPosition();
        rows.GetLineData(fields, record.lengths, record.count);
        record.fields = fields;
        record.size = m_reader->GetPosition() - start;
        if (const DWORD code = rows.GetErrorCode(); code != 0)
            throw CFault(TQC_IO, "reading failed after " + DescribeRow() + ": " + GetErrorText(code),
                         static_cast<std::int32_t>(code));
        if (record.size == 0)
            return false;
        ++m_row;
        if (fields == nullptr)
            throw CFault(TQC_LIMIT, DescribeRow() +
                                        ": more than 65535 bytes, which is the maximum; a closing quote may "
                                        "be missing");
        // A SUB where a record begins is no row; after fields it ends their row.
        const bool isMark = record.size == 1 && m_reader->GetLastByte() == SCDataAccessDefine::SUB_CODE;
        if (record.count > 0 && !isMark)
            return true;
        --m_row;
    }
    return false;
}

bool CTextRows::ReadRow() {
    if (!ReadRecord(m_record))
        return false;
    if (m_file->GetType() == TQC_FIXED)
        CheckRest();
    return true;
}

/// Takes away the column that holds what follows the last one, which must be nothing.
void CTextRows::CheckRest() {
    const std::size_t columns = m_file->GetWidths().size();
    if (m_record.count <= columns)
        return;
    if (m_record.lengths[columns] > 0 || m_record.size >= static_cast<LONGLONG>(maxSize - columns))
        throw CFault(TQC_LIMIT, DescribeRow() + ": text after the last column; give larger or more widths");
    m_record.count = static_cast<DWORD>(columns);
}

/// From the first to the last byte of the fields, with the NULs between them.
std::string_view CTextRows::GetRecordText() const {
    if (m_record.count == 0)
        return {};
    const char* const begin = m_record.fields[0];
    const DWORD last = m_record.count - 1;
    return {begin, static_cast<std::size_t>(m_record.fields[last] + m_record.lengths[last] - begin)};
}

/// Whether the fields are valid UTF-8 as they are.
bool CTextRows::IsInPlace() const {
    const std::string_view text = GetRecordText();
    const auto* const bytes = reinterpret_cast<const unsigned char*>(text.data());
    return m_file->GetCodePage() == CP_UTF8 ? CountValidUtf8(text.data(), text.size()) == text.size()
                                            : SkipAscii(bytes, bytes + text.size()) == bytes + text.size();
}

std::span<const tqc_field> CTextRows::GetTexts() {
    m_fields.resize(m_record.count);
    if (!IsInPlace()) {
        ConvertFields();
        return m_fields;
    }
    for (DWORD i = 0; i < m_record.count; ++i)
        m_fields[i] = {m_record.fields[i], m_record.lengths[i]};
    m_textEnd = m_reader->GetBufferEnd();
    return m_fields;
}

/// Says which field has bytes that the code page does not define.
void CTextRows::FailWithInvalidText() const {
    DWORD field = 0;
    while (field + 1 < m_record.count && IsDefinedInAnsi({m_record.fields[field], m_record.lengths[field]}))
        ++field;
    throw CFault(TQC_INVALID_TEXT,
                 DescribeRow() + ": field " + std::to_string(field + 1) + " has bytes that are invalid in " +
                     std::string(GetCodePageName(m_file->GetCodePage())) + "; try another encoding");
}

/// Converts all fields at once: the NULs between them are characters like any other.
void CTextRows::ConvertFields() {
    const std::string_view text = GetRecordText();
    m_text.resize(std::max(m_text.size(), text.size() * maxUtf8PerByte + CColumnBuilder::blockSize + 1));
    m_textEnd = m_text.data() + m_text.size();
    const SUtf8Text converted = ConvertAnsiToUtf8(text, m_text.data());
    if (!converted.isDefined && !m_file->ReplacesInvalid())
        FailWithInvalidText();
    m_text[converted.length] = '\0';
    const char* field = m_text.data();
    for (tqc_field& taken : m_fields) {
        taken = {field, std::strlen(field)};
        field += taken.length + 1;
    }
}

std::span<const tqc_value> CTextRows::GetValues() {
    const auto fields = GetTexts();
    m_values.resize(fields.size());
    for (std::size_t i = 0; i < fields.size(); ++i)
        m_values[i] = {TQC_VALUE_TEXT, 0, 0, fields[i].text, fields[i].length};
    return m_values;
}

std::size_t CTextRows::AppendTo(std::span<CColumnBuilder> builders) {
    const auto fields = GetTexts();
    if (fields.size() > builders.size())
        throw CFault(TQC_LIMIT, DescribeRow() + ": " + std::to_string(fields.size()) + " fields, but there are " +
                                    std::to_string(builders.size()) + " columns");
    const char* const lastBlock = m_textEnd - CColumnBuilder::blockSize;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (fields[i].text <= lastBlock)
            builders[i].AppendBlock(fields[i].text, fields[i].length);
        else
            builders[i].AppendBytes({fields[i].text, fields[i].length});
    }
    for (CColumnBuilder& builder : builders.subspan(fields.size()))
        builder.AppendNull();
    return static_cast<std::size_t>(m_record.size);
}

} // namespace NSTQ::NSTQCore
