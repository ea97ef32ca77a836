// The parts of an xlsx workbook that have the names of the sheets, the relationships and the number formats. The
// input has these parts, separated by NULs, and the target puts them into a package with two sheets. A valid part
// replaces an empty one.
#include "WorkbookRun.h"
#include "xlsx/XlsxBuilder.h"

namespace {

using namespace NSTQ;

constexpr std::string_view goodRoot = "<Relationships><Relationship Id='a' Type='/officeDocument' "
                                      "Target='/xl/workbook.xml'/></Relationships>";
constexpr std::string_view goodBook =
    "<workbook xmlns:r='http://schemas.openxmlformats.org/officeDocument/2006/relationships'>"
    "<sheets><sheet name='A' r:id='s1'/><sheet name='B' r:id='s2'/></sheets>"
    "<definedNames><definedName name='n'>A!$A$1:$C$2</definedName></definedNames></workbook>";
constexpr std::string_view goodRelations =
    "<Relationships><Relationship Id='s1' Type='/worksheet' Target='worksheets/sheet1.xml'/>"
    "<Relationship Id='s2' Type='/worksheet' Target='worksheets/sheet2.xml'/>"
    "<Relationship Id='t' Type='/sharedStrings' Target='sharedStrings.xml'/>"
    "<Relationship Id='f' Type='/styles' Target='styles.xml'/></Relationships>";
constexpr std::string_view goodStyles =
    "<styleSheet><numFmts><numFmt numFmtId='164' formatCode='yyyy'/></numFmts>"
    "<cellXfs><xf numFmtId='0'/><xf numFmtId='14'/><xf numFmtId='164'/></cellXfs></styleSheet>";

/// A sheet with a number in each of the first styles, and with texts.
std::string Sheet() {
    std::string cells;
    for (const char* const number : {"45000.75", "-1", "0.5", "3e9"}) {
        cells += "<row>";
        for (int style = 0; style < 8; ++style)
            cells += "<c s='" + std::to_string(style) + "'><v>" + number + "</v></c>";
        cells += "<c t='s' s='1'><v>0</v></c></row>";
    }
    return "<worksheet><sheetData>" + cells + "</sheetData></worksheet>";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::CFuzzInput input(data, size);
    const auto take = [&input](std::string_view good) {
        const std::string_view part = input.Text();
        return std::string(part.empty() ? good : part);
    };
    std::vector<Tests::SZipEntryText> entries = {
        {.name = "xl/styles.xml", .content = take(goodStyles)},
        {.name = "xl/_rels/workbook.xml.rels", .content = take(goodRelations)},
        {.name = "xl/workbook.xml", .content = take(goodBook)},
        {.name = "_rels/.rels", .content = take(goodRoot)},
        {.name = "xl/sharedStrings.xml", .content = "<sst><si><t>text</t></si></sst>"},
        {.name = "xl/worksheets/sheet1.xml", .content = Sheet()},
        {.name = "xl/worksheets/sheet2.xml", .content = Sheet()}};
    Fuzz::ReadWorkbook([&] { return Tests::OpenBytes(Tests::MakeZip(entries)); });
    return 0;
}
