// The reader returns the rows that the writer has written. Neither grammar preserves every text, so the rows of the
// input are changed until these conditions hold:
//
//   both   a row has at least one field; no field holds a byte below 0x20; the separator is no line end and no quote;
//          the sum of the field lengths plus the number of fields is at most dwMaxLineSize, and no field is longer
//          than dwMaxFieldSize
//   ANSI   no field begins or ends with a space
//   UTF-8  the ANSI code page is 65001; fields are valid UTF-8; a field with a space also holds the separator or a
//          quote, so that it is written in quotes; a row is not a single empty field; it has at most dwMaxFieldCnt
//          fields. A BOM at the beginning is data, because the reader moves to the beginning first.
#include "CCsvDataAccess.h"
#include "CCsvOutPut.h"
#include "FuzzSupport.h"

#include <algorithm>
#include <vector>

namespace {

using namespace NSTQ;
using namespace NSTQ::Fuzz;
using namespace NSTQ::NSTQCore;
using TRow = std::vector<std::string>;

constexpr char fieldEnd = '\x01', rowEnd = '\x02';
constexpr std::array rowSeparators = {',', '\t', ';', ' ', 'a', '\x81', '\xE3'};
constexpr std::array rowLineEnds = {SLineEnd{'\r', '\n'}, SLineEnd{'\n', '\0'}, SLineEnd{'\r', '\0'},
                                    SLineEnd{'\x1F', '\x1E'}};
/// Sizes of a header line, so that the rows after it are at the end of the write buffer and of a fill.
constexpr std::array<WORD, 5> headerSizes = {0, 1, 63980, 63990, 63998};

struct SForm {
    char separator;
    SLineEnd lineEnd;
    bool utf8;
};

std::string MendUtf8(const std::string& text) {
    const int length = static_cast<int>(text.size());
    if (length == 0)
        return {};
    std::u16string wide(text.size(), u'\0');
    const int units = Platform::MultiByteToWideChar(Platform::CP_UTF8, 0, text.data(), length, wide.data(), length);
    std::string mended(wide.size() * 3, '\0');
    const int size = Platform::WideCharToMultiByte(Platform::CP_UTF8, 0, wide.data(), units, mended.data(),
                                                   static_cast<int>(mended.size()), nullptr, nullptr);
    mended.resize(static_cast<std::size_t>(size));
    return mended;
}

std::string KeptField(std::string field, const SForm& form) {
    std::erase_if(field, [](unsigned char c) { return c < ' '; });
    if (form.utf8) {
        field = MendUtf8(field);
        if (field.find(form.separator) == field.npos && field.find('"') == field.npos)
            std::erase(field, ' ');
        return field;
    }
    field.erase(field.find_last_not_of(' ') + 1);
    field.erase(0, std::min(field.size(), field.find_first_not_of(' ')));
    return field;
}

std::vector<TRow> MakeRows(std::string_view text, const SForm& form) {
    std::vector<TRow> rows;
    while (!text.empty()) {
        std::string_view line = text.substr(0, text.find(rowEnd));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
        TRow row;
        for (std::size_t at = 0; at != line.npos;) {
            const std::size_t end = line.find(fieldEnd, at);
            row.push_back(KeptField(std::string(line.substr(at, end - at)), form));
            at = end == line.npos ? end : end + 1;
        }
        if (!form.utf8 || row.size() > 1 || !row[0].empty())
            rows.push_back(std::move(row));
    }
    return rows;
}

void WriteRows(const std::string& path, const std::vector<TRow>& rows, const SForm& form, WORD headerSize) {
    CCsvOutPut writer;
    writer.SetSeparator(form.separator);
    writer.SetDelimiter(form.lineEnd.pre, form.lineEnd.post);
    Require(writer.FileOpen(path.c_str()), "the file can be made");
    if (headerSize > 0)
        Require(writer.WriteHeaderData(std::string(headerSize, 'x').c_str(), headerSize), "the header is written");
    for (const TRow& row : rows) {
        std::vector<const char*> fields;
        std::vector<WORD> lengths;
        for (const std::string& field : row) {
            fields.push_back(field.data());
            lengths.push_back(static_cast<WORD>(field.size()));
        }
        Require(writer.WriteLineData(fields.data(), lengths.data(), static_cast<DWORD>(row.size())),
                "the row is written");
    }
    writer.FileClose();
    Require(writer.GetErrorCode() == 0, "everything is written");
}

/// The smallest limits of a reader that has to read these rows.
struct SLimits {
    std::size_t fields = 1, line = 1, field = 1;

    explicit SLimits(const std::vector<TRow>& rows) {
        for (const TRow& row : rows) {
            std::size_t size = row.size();
            for (const std::string& text : row) {
                size += text.size();
                field = std::max(field, text.size());
            }
            line = std::max(line, size);
            fields = std::max(fields, row.size());
        }
    }
};

void ReadRows(CCsvDataAccess& reader, const std::vector<TRow>& rows, bool hasHeader, bool utf8) {
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        Require(reader.HasNextLineData(), "a row is still to come");
        const bool isRead = i == 0 ? reader.GetSpecificLineData(hasHeader ? 1 : 0, fields, lengths, count)
                                   : reader.GetLineData(fields, lengths, count);
        Require(isRead && count == rows[i].size(), "the row has the fields that were written");
        for (std::size_t field = 0; field < count; ++field)
            Require(std::string_view(fields[field], lengths[field]) == rows[i][field],
                    "the field is the one that was written");
    }
    if (!utf8) {
        Require(reader.GetLineData(fields, lengths, count) && count == 0, "nothing comes after the last line end");
    }
    Require(!reader.HasNextLineData(), "all rows have been read");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CFuzzInput input(data, size);
    Scan::EKernel chosen{};
    const bool utf8 = input.Flag(chosen);
    const Tests::CKernel kernel(chosen);
    const SForm form{input.Pick(rowSeparators), input.Pick(rowLineEnds), utf8};
    const WORD headerSize = input.Pick(headerSizes);
    const std::size_t readSize = input.Pick(readSizes);
    const CAnsiPage page(utf8 ? Platform::CP_UTF8 : 932);
    const std::vector<TRow> rows = MakeRows(input.Rest(), form);
    const SLimits limits(rows);
    if (rows.empty() || limits.line > 65535)
        return 0;

    const CMemoryFile file;
    WriteRows(file.Path(), rows, form, headerSize);
    CSourceDataInfo info;
    info.SetCommonInfo(file.Path().c_str(), SCDeclareConstant::SFT_CSV);
    info.SetReadCharSet(utf8 ? CSourceDataInfo::RCS_UTF8 : CSourceDataInfo::RCS_ANSI);
    CCsvDataAccess reader(static_cast<DWORD>(limits.fields), static_cast<DWORD>(limits.line),
                          static_cast<DWORD>(limits.field));
    reader.SetSeparator(form.separator);
    reader.SetDelimiter(form.lineEnd.pre, form.lineEnd.post);
    // Reading a long header a byte or two at a time would take the time of thousands of inputs.
    const CReadFaults faults(headerSize > 1 ? std::max<std::size_t>(readSize, 16000) : readSize);
    Require(reader.FileOpen(&info), "the file can be opened");
    ReadRows(reader, rows, headerSize > 0, utf8);
    return 0;
}
