// Workbooks built in memory from pieces of XML, valid or not, and their rows as text.
#pragma once

#include "providers/xlsx/Xlsx.h"
#include "support/Deflated.h"
#include "support/RowsText.h"

namespace NSTQ::Tests {

inline constexpr std::string_view officeNamespace =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships";

/// A workbook with one sheet, "Sheet1", unless its parts are replaced.
struct SXlsxParts {
    std::string strRows;    ///< content of sheetData
    std::string strStrings; ///< content of sst
    std::string strFormats; ///< content of styleSheet
    std::string strBookProperties;
    std::string strNames; ///< content of definedNames
    std::vector<std::string> sheetNames = {"Sheet1"};
    std::string strTarget = "worksheets/sheet1.xml";
    std::string strSheetMode;    ///< further attributes of the sheet's relationship
    std::string strSheetPart;    ///< the whole part, in place of strRows
    std::string strWorkbookPart; ///< the whole part
    bool isDeflated = false;

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

    std::string File() const { return MakeZip(Entries()); }

    std::vector<SZipEntryText> Entries() const {
        const auto pack = [this](SZipEntryText entry) { return isDeflated ? Deflated(std::move(entry)) : entry; };
        return {{.name = "_rels/.rels",
                 .content = "<Relationships>" + Relationship("a", "officeDocument", "/xl/workbook.xml") +
                            "</Relationships>"},
                {.name = "xl/workbook.xml", .content = WorkbookPart()},
                {.name = "xl/_rels/workbook.xml.rels",
                 .content = "<Relationships>" + Relationship("s", "worksheet", strTarget, strSheetMode) +
                            Relationship("t", "sharedStrings", "sharedStrings.xml") +
                            Relationship("c", "chartsheet", "chart.xml") +
                            Relationship("f", "styles", "../xl/./styles.xml") + "</Relationships>"},
                pack({.name = "xl/worksheets/sheet1.xml", .content = SheetPart()}),
                pack({.name = "xl/sharedStrings.xml", .content = "<sst>" + strStrings + "</sst>"}),
                {.name = "xl/styles.xml", .content = "<styleSheet>" + strFormats + "</styleSheet>"}};
    }
};

inline std::unique_ptr<Platform::IDataSource> OpenBytes(std::string bytes, bool hasHeader = false) {
    return Providers::OpenXlsx(Providers::CSourceInput(std::make_shared<CMemoryAccess>(std::move(bytes))),
                               {"book.xlsx", "", hasHeader});
}

inline std::string TableText(std::string bytes, std::u16string_view table = u"Sheet1$") {
    return RowsText(*OpenBytes(std::move(bytes))->OpenTable(table));
}

} // namespace NSTQ::Tests
