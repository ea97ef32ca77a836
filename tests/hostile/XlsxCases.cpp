// Workbooks made to do harm, or broken.
#include "hostile/Hostile.h"

#include "support/Repeat.h"
#include "xlsx/XlsxBuilder.h"

namespace NSTQ::Tests {
namespace {

const struct {
    const char* title;
    std::string SXlsxParts::*part;
    std::string text;
    const char* word; ///< of the description
} replaced[] = {
    {"DOCTYPE with entities that multiply", &SXlsxParts::strSheetPart,
     "<!DOCTYPE x [<!ENTITY a 'aaaa'>]><worksheet>&a;</worksheet>", "DOCTYPE"},
    {"DOCTYPE of an outside file in the workbook", &SXlsxParts::strWorkbookPart,
     "<!DOCTYPE x SYSTEM 'file:///etc/passwd'><workbook/>", "DOCTYPE"},
    {"a cell right of the grid", &SXlsxParts::strRows, "<row><c r='XFE1'><v>1</v></c></row>", "XFE1"},
    {"a row below the grid", &SXlsxParts::strRows, "<row r='1048577'/>", "1048577"},
    {"a row that follows the last", &SXlsxParts::strRows, "<row r='1048576'/><row/>", "1048577"},
    {"a cell that follows the last", &SXlsxParts::strRows, "<row r='7'><c r='XFD7'/><c/></row>", "row 7"},
    {"a shared text that there is not", &SXlsxParts::strRows, "<row><c t='s'><v>7</v></c></row>", "shared"},
    {"a style that is none", &SXlsxParts::strRows, "<row><c s='x'><v>1</v></c></row>", "style"},
    {"a sheet that ends within a row", &SXlsxParts::strSheetPart, "<worksheet><sheetData><row><c><v>1", "too early"},
    {"damage behind the cells", &SXlsxParts::strSheetPart, "<worksheet><sheetData/><a></b></worksheet>", "end tag"},
    {"no sheet but something else", &SXlsxParts::strSheetPart, "<chartsheet/>", "chartsheet"},
    {"no workbook but something else", &SXlsxParts::strWorkbookPart, "<document/>", "document"},
    {"a binary workbook", &SXlsxParts::strWorkbookPart, "\x83\x01\x00\x80", "workbook.xml"},
    {"a sheet without a part", &SXlsxParts::strTarget, "worksheets/none.xml", "missing"},
};

struct SSpoiled {
    const char* title;
    std::function<void(SXlsxParts&)> spoil;
    const char* word; ///< of the description
};

const SSpoiled spoiled[] = {
    {"a sheet outside the package",
     [](SXlsxParts& p) {
         p.strTarget = "http://example.com/sheet1.xml";
         p.strSheetMode = "TargetMode='External'";
     },
     "no part of its own"},
    {"a sheet of 100 MB of comments",
     [](SXlsxParts& p) {
         p.isDeflated = true;
         p.strRows = Repeat("<!--" + std::string(1000000, ' ') + "-->", 100);
     },
     "its compression ratio exceeds"},
    {"shared texts of 50 MB of blanks",
     [](SXlsxParts& p) {
         p.isDeflated = true;
         p.strStrings = Repeat("<si><t>" + std::string(1000000, ' ') + "</t></si>", 50);
     },
     "its compression ratio exceeds"},
};

std::string LongCell(std::size_t size) {
    return "<c t='str'><v>" + std::string(size, 'x') + "</v></c>";
}

std::string LongRowsBackwards(int count) {
    std::string rows;
    for (int row = count; row > 0; --row)
        rows += "<row r='" + std::to_string(row) + "'>" + LongCell(4'000'000) + "</row>";
    return rows;
}

/// Shared text 0 is 4 MB of blanks.
void ShareBlanks(SXlsxParts& p, std::string rows) {
    p.isDeflated = true;
    p.strStrings = "<si><t xml:space='preserve'>" + std::string(4'000'000, ' ') + "</t></si>";
    p.strRows = std::move(rows);
}

std::string BlanksOnADiagonal(int count) {
    std::string rows;
    for (int i = 0; i < count; ++i)
        rows += "<row>" + Repeat("<c/>", static_cast<std::size_t>(i)) + "<c t='str'><v>" +
                std::string(1'000'000, ' ') + "</v></c></row>";
    return rows;
}

std::string CollidingFormats(std::uint32_t count) {
    std::string formats = "<numFmts>";
    for (std::uint32_t i = 1; i <= count; ++i)
        formats += "<numFmt numFmtId='" + std::to_string(42043 * i) + "' formatCode='0'/>";
    return formats + "</numFmts>";
}

std::string MakeBook(const std::function<void(SXlsxParts&)>& spoil) {
    SXlsxParts parts;
    parts.strRows = "<row><c t='inlineStr'><is><t>1</t></is></c></row>";
    spoil(parts);
    return parts.File();
}

/// Packages of another kind under this name, and cut ones.
void AddOtherFiles(std::vector<SHostileCase>& cases) {
    for (const std::string& bytes : {MakeZip({}), MakeZip({{.name = "content.xml", .content = "<office/>"}})})
        cases.push_back({"no workbook", [=] { return bytes; }, "refused: ", "no main document"});
    const std::string whole = MakeBook([](SXlsxParts&) {});
    for (std::size_t size = 7; size < whole.size(); size += 17)
        cases.push_back({"cut to " + std::to_string(size), [=] { return whole.substr(0, size); }, "refused: "});
}

} // namespace

std::vector<SHostileCase> XlsxCases() {
    // The good one claims that all of its grid is merged.
    std::vector<SHostileCase> cases{{"a good one", [] { return MakeBook([](SXlsxParts&) {}); }, "1 rows"}};
    for (const SSpoiled& known : spoiled)
        cases.push_back({known.title, [&known] { return MakeBook(known.spoil); }, "refused: ", known.word});
    for (const auto& known : replaced)
        cases.push_back({known.title,
                         [&known] { return MakeBook([&](SXlsxParts& p) { p.*known.part = known.text; }); },
                         "refused: ", known.word});
    AddOtherFiles(cases);
    const auto add = [&](const char* title, const std::function<void(SXlsxParts&)>& spoil, const char* outcome) {
        cases.push_back({title, [=] { return MakeBook(spoil); }, outcome});
    };
    add(
        "as many long texts out of order as fit", [](SXlsxParts& p) { p.strRows += LongRowsBackwards(8); }, "8 rows");
    add(
        "more of them", [](SXlsxParts& p) { p.strRows += LongRowsBackwards(9); }, "beyond a limit: ");
    add(
        "a row of long texts", [](SXlsxParts& p) { p.strRows += "<row>" + Repeat(LongCell(100'000), 50) + "</row>"; },
        "beyond a limit: ");
    const std::string blankCell = "<c t='s'><v>0</v></c>";
    add(
        "blanks shared by 100,000 rows",
        [=](SXlsxParts& p) { ShareBlanks(p, Repeat("<row>" + blankCell + "</row>", 100'000)); }, "100000 rows");
    add(
        "blanks on a diagonal", [](SXlsxParts& p) { p.isDeflated = true, p.strRows = BlanksOnADiagonal(60); },
        "60 rows");
    add(
        "formats whose numbers collide",
        [](SXlsxParts& p) { p.isDeflated = true, p.strFormats = CollidingFormats(42'000); }, "1 rows");
    add(
        "a target that goes up again and again",
        [](SXlsxParts& p) {
            p.isDeflated = true;
            p.strTarget = std::string(1'000'000, 'a') + Repeat("/b/..", 100'000) + "/../worksheets/sheet1.xml";
        },
        "1 rows");
    add(
        "three million empty shared strings",
        [](SXlsxParts& p) { p.isDeflated = true, p.strStrings = Repeat("<si/>", 3'300'000); }, "1 rows");
    return cases;
}

} // namespace NSTQ::Tests
