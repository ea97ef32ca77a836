// Workbooks built in memory from pieces of XML, right or wrong on purpose, and what comes out of them as text.
#pragma once

#include "providers/common/CSourceError.h"
#include "providers/common/Utf8Text.h"
#include "providers/xlsx/Xlsx.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tests {

class CMemoryAccess : public Providers::IRandomAccess {
public:
    explicit CMemoryAccess(std::string bytes) : m_strBytes(std::move(bytes)) {}
    std::uint64_t Size() const override { return m_strBytes.size(); }
    void ReadAt(std::uint64_t offset, std::span<unsigned char> target) override {
        if (offset > m_strBytes.size() || target.size() > m_strBytes.size() - offset)
            throw Providers::CSourceError("past the end");
        std::copy_n(m_strBytes.begin() + static_cast<std::ptrdiff_t>(offset), target.size(), target.begin());
    }

private:
    std::string m_strBytes;
};

/// What the directory says of an entry instead of the truth.
struct SForgery {
    std::optional<std::uint32_t> size;
    std::optional<std::uint32_t> compressedSize;
    std::optional<std::uint32_t> offset;
    std::optional<std::uint32_t> crc;
    std::uint16_t flags = 0;
    std::optional<std::uint16_t> method;
    bool isZip64 = false; ///< sizes and offset go to the extra field
};

class CZipBuilder {
public:
    CZipBuilder& Add(std::string_view name, std::string_view content, bool isDeflated = false,
                     const SForgery& forgery = {}) {
        const std::string packed = isDeflated ? Deflate(content) : std::string(content);
        const auto size = static_cast<std::uint32_t>(content.size());
        const auto packedSize = static_cast<std::uint32_t>(packed.size());
        const auto crc = static_cast<std::uint32_t>(
            crc32(0, reinterpret_cast<const Bytef*>(content.data()), static_cast<uInt>(content.size())));
        const auto offset = forgery.offset.value_or(static_cast<std::uint32_t>(m_strFile.size()));
        const std::uint16_t method = forgery.method.value_or(isDeflated ? 8 : 0);
        std::string sizes = Number(forgery.crc.value_or(crc), 4) +
                            Number(forgery.isZip64 ? ~0U : forgery.compressedSize.value_or(packedSize), 4) +
                            Number(forgery.isZip64 ? ~0U : forgery.size.value_or(size), 4) + Number(name.size(), 2);
        std::string extra;
        if (forgery.isZip64)
            extra = Number(1, 2) + Number(24, 2) + Number(size, 8) + Number(packedSize, 8) + Number(offset, 8);
        const std::string common =
            Number(20, 2) + Number(forgery.flags, 2) + Number(method, 2) + Number(0, 4) + sizes;
        m_strFile.append("PK\3\4").append(common).append(Number(0, 2)).append(name).append(packed);
        m_strDirectory.append("PK\1\2").append(Number(20, 2)).append(common).append(Number(extra.size(), 2));
        m_strDirectory.append(10, '\0').append(Number(forgery.isZip64 ? ~0U : offset, 4)).append(name).append(extra);
        ++m_count;
        return *this;
    }

    std::string Finish(std::string_view comment = {}, bool isZip64 = false) const {
        std::string file = m_strFile + m_strDirectory;
        const std::size_t record64 = file.size();
        if (isZip64) {
            file.append("PK\6\6").append(Number(44, 8)).append(Number(0, 12)).append(Number(m_count, 8));
            file.append(Number(m_count, 8)).append(Number(m_strDirectory.size(), 8));
            file.append(Number(m_strFile.size(), 8));
            file.append("PK\6\7").append(Number(0, 4)).append(Number(record64, 8)).append(Number(1, 4));
        }
        file.append("PK\5\6").append(Number(0, 4));
        for (int i = 0; i < 2; ++i)
            file.append(Number(isZip64 ? 0xFFFF : m_count, 2));
        file.append(Number(isZip64 ? ~0U : m_strDirectory.size(), 4));
        file.append(Number(isZip64 ? ~0U : m_strFile.size(), 4)).append(Number(comment.size(), 2)).append(comment);
        return file;
    }

private:
    static std::string Number(std::uint64_t number, int bytes) {
        std::string text;
        for (int i = 0; i < bytes; ++i)
            text += i < 8 ? static_cast<char>(number >> (8 * i) & 0xFF) : '\0';
        return text;
    }

    static std::string Deflate(std::string_view content) {
        z_stream stream = {};
        deflateInit2(&stream, 6, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
        std::string packed(deflateBound(&stream, static_cast<uLong>(content.size())), '\0');
        stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
        stream.avail_in = static_cast<uInt>(content.size());
        stream.next_out = reinterpret_cast<Bytef*>(packed.data());
        stream.avail_out = static_cast<uInt>(packed.size());
        deflate(&stream, Z_FINISH);
        packed.resize(stream.total_out);
        deflateEnd(&stream);
        return packed;
    }

    std::string m_strFile;
    std::string m_strDirectory;
    std::uint64_t m_count = 0;
};

inline constexpr std::string_view officeNamespace =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships";

/// A workbook with one sheet, "Sheet1", unless its parts are replaced.
struct SXlsxParts {
    std::string strRows;    ///< what stands in sheetData
    std::string strStrings; ///< what stands in sst
    std::string strFormats; ///< what stands in styleSheet
    std::string strBookProperties;
    std::string strNames; ///< what stands in definedNames
    std::vector<std::string> sheetNames = {"Sheet1"};
    std::string strTarget = "worksheets/sheet1.xml";
    std::string strSheetMode;    ///< further attributes of the sheet's relationship
    std::string strSheetPart;    ///< the whole part, in place of strRows
    std::string strWorkbookPart; ///< the whole part
    bool isDeflated = false;
    SForgery sheetForgery = {};

    std::string Relationship(std::string_view id, std::string_view type, std::string_view target,
                             std::string_view mode = {}) const {
        return "<Relationship Id='" + std::string(id) + "' Type='" + std::string(officeNamespace) + "/" +
               std::string(type) + "' Target='" + std::string(target) + "' " + std::string(mode) + "/>";
    }

    std::string SheetPart() const {
        return strSheetPart.empty()
                   ? "<?xml version='1.0' encoding='UTF-8'?><worksheet><dimension ref='A1:B2'/><sheetData>" +
                         strRows + "</sheetData><mergeCells><mergeCell ref='A1:XFD1048576'/></mergeCells></worksheet>"
                   : strSheetPart;
    }

    std::string WorkbookPart() const {
        if (!strWorkbookPart.empty())
            return strWorkbookPart;
        std::string sheets;
        for (std::size_t i = 0; i < sheetNames.size(); ++i)
            sheets += "<sheet name=\"" + sheetNames[i] + "\" sheetId='" + std::to_string(i + 1) + "' rel:id='s'/>";
        return "<workbook xmlns:rel='" + std::string(officeNamespace) + "'>" + strBookProperties + "<sheets>" +
               sheets + "</sheets><definedNames>" + strNames + "</definedNames></workbook>";
    }

    CZipBuilder Zip() const {
        CZipBuilder zip;
        zip.Add("_rels/.rels",
                "<Relationships>" + Relationship("a", "officeDocument", "/xl/workbook.xml") + "</Relationships>");
        zip.Add("xl/workbook.xml", WorkbookPart());
        zip.Add("xl/_rels/workbook.xml.rels",
                "<Relationships>" + Relationship("s", "worksheet", strTarget, strSheetMode) +
                    Relationship("t", "sharedStrings", "sharedStrings.xml") +
                    Relationship("c", "chartsheet", "chart.xml") + Relationship("f", "styles", "../xl/./styles.xml") +
                    "</Relationships>");
        zip.Add("xl/worksheets/sheet1.xml", SheetPart(), isDeflated, sheetForgery);
        zip.Add("xl/sharedStrings.xml", "<sst>" + strStrings + "</sst>", isDeflated);
        zip.Add("xl/styles.xml", "<styleSheet>" + strFormats + "</styleSheet>");
        return zip;
    }
};

inline std::unique_ptr<Platform::IDataSource> OpenBytes(std::string bytes, bool hasHeader = false) {
    return Providers::OpenXlsxPackage(std::make_shared<CMemoryAccess>(std::move(bytes)),
                                      {"book.xlsx", "", hasHeader});
}

/// A value as text: '-' for none, texts in quotes, dates behind a 'd'.
inline std::string ValueText(const Platform::VARIANT& value) {
    using namespace Platform;
    char number[40];
    switch (value.vt) {
    case VT_NULL:
        return "-";
    case VT_BSTR: {
        std::string text = "'";
        for (const char16_t unit : BstrView(value.bstrVal)) {
            unsigned char bytes[4];
            text.append(reinterpret_cast<char*>(bytes), Providers::EncodeUtf8(unit, bytes));
        }
        return text + "'";
    }
    case VT_BOOL:
        return value.boolVal == VARIANT_TRUE ? "true" : value.boolVal == VARIANT_FALSE ? "false" : "bad";
    case VT_R8:
        std::snprintf(number, sizeof number, "%.15g", value.dblVal);
        return number;
    case VT_DATE:
        std::snprintf(number, sizeof number, "d%.10g", value.date);
        return number;
    default:
        return "type " + std::to_string(value.vt);
    }
}

/// Rows end with ';', cells are separated by blanks. Every other value is asked for twice, some rows not at all.
inline std::string RowsText(Platform::IRowSource& rows) {
    std::string text;
    std::int64_t count = 0;
    for (; rows.MoveNext(); ++count) {
        for (std::size_t i = 0; i < rows.GetColumnNames().size(); ++i) {
            if (i % 2 == 1)
                rows.GetValue(i);
            text += (i == 0 ? "" : " ") + ValueText(rows.GetValue(i));
        }
        text += ';';
    }
    return count == rows.GetRowCount() ? text : text + " but " + std::to_string(rows.GetRowCount()) + " rows claimed";
}

inline std::string TableText(std::string bytes, std::u16string_view table = u"Sheet1$") {
    return RowsText(*OpenBytes(std::move(bytes))->OpenTable(table));
}

} // namespace NSTQ::Tests
