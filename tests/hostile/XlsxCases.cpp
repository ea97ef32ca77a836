// Workbooks made to do harm, or damaged.
#include "hostile/Hostile.h"

#include "support/Bytes.h"
#include "xlsx/XlsxBuilder.h"

namespace NSTQ::Tests {
namespace {

using TParts = SXlsxParts;

std::function<void(TParts&)> Set(std::string TParts::*part, std::string text) {
    return [=](TParts& parts) { parts.*part = text; };
}

/// In a compressed part, which makes a small file.
std::function<void(TParts&)> Pack(std::string TParts::*part, const std::function<std::string()>& text) {
    return [=](TParts& parts) { parts.isDeflated = true, parts.*part = text(); };
}

std::string Cell(std::size_t size, char filling = 'x') {
    return "<c t='str'><v>" + std::string(size, filling) + "</v></c>";
}

/// Rows of 4 MB, the last one first.
std::function<void(TParts&)> ReversedRows(std::size_t count) {
    return [=](TParts& parts) {
        parts.strRows += Repeat(
            [=](std::size_t i) { return "<row r='" + std::to_string(count - i) + "'>" + Cell(4'000'000) + "</row>"; },
            count);
    };
}

std::string CollidingFormat(std::size_t i) {
    return "<numFmt numFmtId='" + std::to_string(42043 * (i + 1)) + "' formatCode='0'/>";
}

const std::string blanks(1'000'000, ' ');

const SSpoiled<TParts> spoiled[] = {
    {"DOCTYPE with entities that multiply",
     Set(&TParts::strSheetPart, "<!DOCTYPE x [<!ENTITY a 'aaaa'>]><worksheet>&a;</worksheet>"), "DOCTYPE"},
    {"DOCTYPE of a file", Set(&TParts::strWorkbookPart, "<!DOCTYPE x SYSTEM 'file:///etc/passwd'><workbook/>"),
     "DOCTYPE"},
    {"a cell right of the grid", Set(&TParts::strRows, "<row><c r='XFE1'><v>1</v></c></row>"), "XFE1"},
    {"a row below the grid", Set(&TParts::strRows, "<row r='1048577'/>"), "1048577"},
    {"a row that follows the last", Set(&TParts::strRows, "<row r='1048576'/><row/>"), "1048577"},
    {"a cell that follows the last", Set(&TParts::strRows, "<row r='7'><c r='XFD7'/><c/></row>"), "row 7"},
    {"a shared string out of range", Set(&TParts::strRows, "<row><c t='s'><v>7</v></c></row>"), "shared"},
    {"an invalid style", Set(&TParts::strRows, "<row><c s='x'><v>1</v></c></row>"), "style"},
    {"a sheet that ends within a row", Set(&TParts::strSheetPart, "<worksheet><sheetData><row><c><v>1"), "too early"},
    {"damage behind the cells", Set(&TParts::strSheetPart, "<worksheet><sheetData/><a></b></worksheet>"), "end tag"},
    {"a sheet of another kind", Set(&TParts::strSheetPart, "<chartsheet/>"), "chartsheet"},
    {"a workbook of another kind", Set(&TParts::strWorkbookPart, "<document/>"), "document"},
    {"a binary workbook", Set(&TParts::strWorkbookPart, "\x83\x01\x00\x80"), "workbook.xml"},
    {"a sheet without a part", Set(&TParts::strTarget, "worksheets/none.xml"), "missing"},
    {"a sheet outside the package", Set(&TParts::strSheetMode, "TargetMode='External'"), "no part of its own"},
    {"a sheet of 100 MB of comments", Pack(&TParts::strRows, [] { return Repeat("<!--" + blanks + "-->", 100); }),
     "its compression ratio exceeds"},
    {"shared strings of 50 MB of blanks",
     Pack(&TParts::strStrings, [] { return Repeat("<si><t>" + blanks + "</t></si>", 50); }),
     "its compression ratio exceeds"},
    {"as many long texts out of order as fit", ReversedRows(8), "8 rows"},
    {"more of them", ReversedRows(9), "beyond a limit: "},
    {"a row of long texts", [](TParts& parts) { parts.strRows = "<row>" + Repeat(Cell(100'000), 50) + "</row>"; },
     "beyond a limit: "},
    {"a shared string of blanks in 100,000 rows",
     [](TParts& parts) {
         Pack(&TParts::strRows, [] { return Repeat("<row><c t='s'><v>0</v></c></row>", 100'000); })(parts);
         parts.strStrings = "<si><t xml:space='preserve'>" + Repeat(blanks, 4) + "</t></si>";
     },
     "100000 rows"},
    {"blanks on a diagonal",
     Pack(&TParts::strRows,
          [] {
              return Repeat(
                  [](std::size_t i) { return "<row>" + Repeat("<c/>", i) + Cell(1'000'000, ' ') + "</row>"; }, 60);
          }),
     "60 rows"},
    {"formats whose numbers collide",
     Pack(&TParts::strFormats, [] { return "<numFmts>" + Repeat(CollidingFormat, 42'000) + "</numFmts>"; }),
     "1 rows"},
    {"a target that goes up again and again",
     Pack(&TParts::strTarget,
          [] { return '/' + Repeat("a", 1'000'000) + Repeat("/b/..", 100'000) + "/../xl/worksheets/sheet1.xml"; }),
     "1 rows"},
    // Not compressed, so that no ratio ends them.
    {"4 MB in a value", Set(&TParts::strRows, "<row><c><v>" + Repeat("9", 4'000'000) + "</v></c></row>"), "1 rows"},
    {"4 MB in an attribute", Set(&TParts::strRows, "<row spans='" + Repeat("1:2 ", 1'000'000) + "'/>"), "0 rows"},
    {"4 MB of blanks in a tag", Set(&TParts::strRows, "<row" + Repeat(blanks, 4) + "/>"), "0 rows"},
    {"4 MB of references", Set(&TParts::strStrings, "<si><t>" + Repeat("&#10;", 800'000) + "</t></si>"), "1 rows"},
    {"a million comments", Set(&TParts::strRows, Repeat("<!---->", 1'000'000)), "0 rows"},
    {"a million instructions", Set(&TParts::strRows, Repeat("<?a?>", 1'000'000)), "0 rows"},
    {"a million empty cells", Set(&TParts::strRows, "<row>" + Repeat("<c/>", 1'000'000) + "</row>"), "grid"},
    {"a million unknown elements", Set(&TParts::strRows, Repeat("<a></a>", 1'000'000)), "0 rows"},
    {"a million nested elements", Set(&TParts::strRows, Repeat("<a>", 1'000'000)), "deep"},
    {"a million rows of one number", Set(&TParts::strRows, Repeat("<row r='1'/>", 1'000'000)), "0 rows"},
    {"a million runs", Set(&TParts::strStrings, "<si>" + Repeat("<r><t/></r>", 1'000'000) + "</si>"), "1 rows"},
    {"a million phonetic runs", Set(&TParts::strStrings, "<si>" + Repeat("<rPh/>", 1'000'000) + "</si>"), "1 rows"},
    {"a million styles", Set(&TParts::strFormats, "<cellXfs>" + Repeat("<xf/>", 1'000'000) + "</cellXfs>"), "1 rows"},
    {"a million names", Set(&TParts::strNames, Repeat("<definedName name='a'>A!A1</definedName>", 1'000'000)),
     "1 rows"},
    {"100000 sheets", [](TParts& parts) { parts.sheetNames.resize(100'000, "Sheet1"); }, "too many sheets"},
    {"a format of a megabyte",
     Set(&TParts::strFormats, "<numFmts><numFmt numFmtId='164' formatCode='" + blanks + "'/></numFmts>"), "1 rows"},
    {"3 million shared strings", Pack(&TParts::strStrings, [] { return Repeat("<si/>", 3'300'000); }), "1 rows"},
};

std::string MakeBook(const std::function<void(TParts&)>& spoil) {
    TParts parts;
    parts.strRows = "<row><c t='inlineStr'><is><t>1</t></is></c></row>";
    spoil(parts);
    return parts.File();
}

} // namespace

std::vector<SHostileCase> XlsxCases() {
    // The valid one claims that all of its grid is merged.
    const std::string whole = MakeBook([](TParts&) {});
    std::vector<SHostileCase> cases{{"a valid one", [=] { return whole; }, "1 rows"}};
    AddSpoiled(cases, spoiled, MakeBook);
    for (const std::string& bytes : {MakeZip({}), MakeZip({{.name = "content.xml", .content = "<office/>"}})})
        cases.push_back({"no workbook", [=] { return bytes; }, "refused: ", "no main document"});
    AddTruncated(cases, whole, 7, 17, whole.size());
    return cases;
}

} // namespace NSTQ::Tests
