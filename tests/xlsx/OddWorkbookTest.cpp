// Workbooks that are unusual but valid, and their rows, from both scanners of sheets.
#include "providers/common/CSourceError.h"
#include "providers/workbook/CFormatCode.h"
#include "providers/workbook/CTextPool.h"
#include "support/Raised.h"
#include "xlsx/XlsxBuilder.h"

#include "tqcAccess/CodePage.h"

#include <gmock/gmock.h>

namespace NSTQ::Tests {
namespace {

using namespace std::string_literals;

/// Adds a prefix to every element, so that the fast scanner does not accept the sheet.
std::string WithPrefixes(std::string_view xml) {
    std::string prefixed;
    for (std::size_t i = 0; i < xml.size(); ++i) {
        prefixed += xml[i];
        const bool isTag = xml[i] == '<' || (xml[i] == '/' && i > 0 && xml[i - 1] == '<');
        if (isTag && i + 1 < xml.size() && std::isalpha(static_cast<unsigned char>(xml[i + 1])))
            prefixed += "x:";
    }
    return prefixed;
}

std::string ToUtf16Bytes(std::string_view xml, bool isBig, bool hasMark) {
    std::string bytes;
    for (const char16_t unit : (hasMark ? u"\xFEFF" : u"") + Providers::ToUtf16(xml))
        for (const int shift : {isBig ? 8 : 0, isBig ? 0 : 8})
            bytes += static_cast<char>(unit >> shift);
    return bytes;
}

// The rows in XML, with the shared strings 0 to 4 and the formats of CommonParts, and their values: rows end with ;,
// - is null, texts are quoted, dates begin with d.
const std::tuple<const char*, const char*, const char*> rowsCases[] = {
    {"numbers", R"(<row r="1"><c r="A1"><v>12.5</v></c><c r="B1"><v>-1E-3</v></c></row>)", "12.5 -0.001;"},
    {"blanks around values", "<row r=\"1\"><c r=\"A1\"><v> 7\n</v></c><c r=\"B1\"><v>  </v></c></row>", "7;"},
    {"invalid numbers", "<row><c><v>abc</v></c><c><v>1e999</v></c><c><v>inf</v></c></row>", "'abc' '1e999' 'inf';"},
    {"no references", "<row><c><v>1</v></c><c><v>2</v></c></row><row><c/><c><v>3</v></c></row>", "1 2;- 3;"},
    {"a reference, then none",
     R"(<row r="2"><c r="C2"><v>1</v></c><c><v>2</v></c></row><row><c r="C3"><v>3</v></c></row>)", "1 2;3 -;"},
    {"invalid references and styles", R"(<row r="1"><c r="0"><v>1</v></c><c r="1" s=""><v>2</v></c></row>)", "1 2;"},
    {"unordered cells", R"(<row r="1"><c r="C1"><v>3</v></c><c r="A1"><v>1</v></c><c><v>2</v></c></row>)", "1 2 3;"},
    {"the last of repeated cells", R"(<row r="1"><c r="A1"><v>1</v></c><c r="A1"><v>2</v></c></row>)", "2;"},
    {"the last of repeated values", R"(<row r="1"><c r="A1"><v>1</v><v>2</v></c></row>)", "2;"},
    {"a row in two parts", "<row r='1'><c r='A1'><v>1</v></c></row><row r='1'><c r='B1'><v>2</v></c></row>", "1 2;"},
    {"rows out of order",
     R"(<row r="3"><c r="A3"><v>3</v></c></row><row r="1"><c r="B1"><v>1</v></c>)"
     R"(<c r="B1"><v>4</v></c></row><row r="3"><c r="A3"><v>5</v></c></row>)",
     "- 4;- -;5 -;"},
    {"a cell that belongs to another row", R"(<row r="1"><c r="A2"><v>1</v></c></row>)", "1;"},
    {"the used range begins at the first value",
     R"(<row r="2"><c r="A2" s="1"/></row><row r="4"><c r="C4"><v>1</v></c></row><row r="6">)"
     R"(<c r="B6"><v>2</v></c><c r="F6"><v></v></c></row><row r="9"/>)",
     "- 1;- -;2 -;"},
    {"only formats", R"(<row r="1"><c r="A1" s="1"/></row><row r="2"/>)", ""},
    {"texts, even empty ones, are values",
     R"(<row r="1"><c r="A1" t="str"><v></v></c><c r="B1" t="inlineStr"><is><t></t></is></c>)"
     R"(<c r="C1" t="s"><v>1</v></c><c r="D1" t="s"/></row>)",
     "'' '' '';"},
    {"shared texts: plain, rich, phonetic, and the last one again after another text",
     R"(<row r="1"><c r="A1" t="s"><v>0</v></c><c r="B1" t="s"><v>2</v></c>)"
     R"(<c r="C1" t="s"><v>3</v></c><c r="D1" t="str"><v>x</v></c><c r="E1" t="s"><v>3</v></c></row>)",
     "'plain' ' rich text' '東京' 'x' '東京';"},
    {"escapes are decoded only in texts",
     R"(<row r="1"><c r="A1" t="s"><v>4</v></c><c r="B1" t="inlineStr"><is><t>_x005F_x0041_</t></is></c>)"
     R"(<c r="C1" t="str"><v>_x00zz_x004a__x43_</v></c><c r="D1" t="e"><v>_x0041_</v></c></row>)",
     "'a\rb' '_x0041_' '_x00zzJ_x43_' '_x0041_';"},
    {"inline texts with runs and phonetic texts",
     R"(<row r="1"><c r="A1" t="inlineStr"><is><r><rPr><b/></rPr><t>a</t></r>)"
     R"(<r><t xml:space="preserve"> b </t></r><rPh><t>no</t></rPh></is></c></row>)",
     "'a b ';"},
    {"results of formulas",
     R"(<row r="1"><c r="A1"><f>1+1</f><v>2</v></c><c r="B1" t="str"><f t="shared" si="0"/><v>x</v></c>)"
     R"(<c r="C1"><f>A1</f></c></row>)",
     "2 'x';"},
    {"booleans and errors",
     "<row><c t='b'><v>1</v></c><c t='b'><v>0</v></c><c t='b'><v>true</v></c><c t='b'><v>2</v></c><c "
     "t='e'><v>#N/A</v></c>"
     "</row>",
     "true false true '2' '#N/A';"},
    {"dates by format",
     "<row><c s='1'><v>45000.75</v></c><c s='2'><v>45000</v></c><c s='3'><v>1.5</v></c><c s='4'><v>45000</v></c>"
     "<c s='99'><v>45000</v></c></row>",
     "d45000.75 d45000 '36:00:00' 45000 45000;"},
    {"durations by format and in ISO 8601",
     "<row><c s='3'><v>10.6320601851852</v></c><c s='3'><v>-0.0208333</v></c><c s='3'><v>-1e-9</v></c><c "
     "s='3'><v>1e10</v>"
     "</c><c t='d'><v>PT0H11M0.000S</v></c><c t='d'><v>-P1DT12.5H</v></c><c t='d'><v>P2W</v></c><c "
     "t='d'><v>P1M</v></c>"
     "<c t='d'><v>P1DT</v></c><c t='d'><v>PT1M1H</v></c><c s='5'><v>0</v></c><c s='5'><v>1</v></c><c "
     "s='5'><v>-2</v></c>"
     "</row>",
     "'255:10:10' '-0:30:00' '0:00:00' 10000000000 '0:11:00' '-36:30:00' '336:00:00' 'P1M' 'P1DT' 'PT1M1H' 0 "
     "'24:00:00' d-2;"},
    {"days before 29 February 1900, which did not exist",
     "<row><c s='1'><v>0.5</v></c><c s='1'><v>1</v></c><c s='1'><v>59</v></c><c s='1'><v>60</v></c><c "
     "s='1'><v>-1.25</v>"
     "</c></row>",
     "d0.5 d2 d60 d60 d-2.75;"},
    {"numbers out of the range of dates",
     "<row><c s='1'><v>2958465</v></c><c s='1'><v>2958466</v></c><c s='1'><v>-1e9</v></c></row>",
     "d2958465 2958466 -1000000000;"},
    {"dates in ISO 8601",
     "<row><c t='d'><v>2023-03-15T18:00:00</v></c><c t='d'><v>1899-12-29T06:00:00.000Z</v></c><c "
     "t='d'><v>12:00</v></c>"
     "<c t='d'><v>2023-02-30</v></c><c t='d'><v>2023-03-15</v></c></row>",
     "d45000.75 d-1.25 d0.5 '2023-02-30' d45000;"},
    {"references, sections and line ends",
     "<row r=\"1\"><c r=\"A1\" t=\"str\"><v>a&amp;&#x42;&#67;&lt;</v></c><c r=\"B1\" "
     "t=\"str\"><v><![CDATA[<&amp;>]]>\r\nx</v></c>"
     "<c r=\"C1\"><v>1<!-- a comment -->2</v></c></row>",
     "'a&BC<' '<&amp;>\nx' 12;"},
    {"tags with blanks, other quotes and more attributes",
     "<row  r = '1' spans=\"1:2\"><c s='1' r='a1'\n><v >1</v ></c ><c t=\"str\" r=\"B1\" ><v xml:space=\"preserve\"> "
     "x </v></c></row >",
     "d2 ' x ';"},
    {"unknown elements are skipped",
     R"(<row r="1"><c r="A1"><ext><v>9</v><c r="Z9"><v>9</v></c></ext><v>1</v></c><other>)"
     R"(<c r="B1"><v>9</v></c></other></row><c r="Z3"><v>9</v></c>)",
     "1;"},
};

SXlsxParts CommonParts(std::string_view rows) {
    SXlsxParts parts;
    parts.strRows = rows;
    parts.strStrings =
        "<si><t>plain</t></si><si><t/></si><si><r><t xml:space='preserve'> rich</t></r><r><rPr/><t> text</t>"
        "</r></si><si><t>東京</t><rPh sb='0' eb='2'><t>トウキョウ</t></rPh><phoneticPr fontId='1'/></si>"
        "<si><t>a_x000D_b</t></si>";
    parts.strFormats =
        "<numFmts><numFmt formatCode='yy'/><numFmt numFmtId='164' formatCode='[h]:mm'/><numFmt numFmtId='165' "
        "formatCode='0.00&quot;d&quot;'/><numFmt numFmtId='166' formatCode='[=0]?;[&lt;0]m/d;[hh]:mm'/>"
        "</numFmts><cellStyleXfs><xf numFmtId='14'/></cellStyleXfs>"
        "<cellXfs><xf numFmtId='0'/><xf numFmtId='22'/><xf numFmtId='14'/><xf numFmtId='164'/>"
        "<xf numFmtId='165'/><xf numFmtId='166'/></cellXfs>";
    return parts;
}

TEST(XlsxRows, OddSheetsHaveTheirCellsInEveryForm) {
    for (const auto& [title, rows, expected] : rowsCases) {
        SXlsxParts parts = CommonParts(rows);
        EXPECT_EQ(TableText(parts.File()), expected) << title;
        const std::string plain = parts.SheetPart();
        parts.isDeflated = true;
        for (const std::string& form : {"\xEF\xBB\xBF" + WithPrefixes(plain), ToUtf16Bytes(plain, false, true),
                                        ToUtf16Bytes(plain, true, false)}) {
            parts.strSheetPart = form;
            EXPECT_EQ(TableText(parts.File()), expected) << title << ": " << form;
        }
    }
}

/// A blank in the tag of a shared text leaves it to the general scanner.
TEST(XlsxRows, SharedTextsAreTheSameByBothScanners) {
    std::vector<std::string> texts = {"",
                                      " a ",
                                      "a&lt;b",
                                      "a\r\nb",
                                      "a\tb",
                                      "_x0041_",
                                      "a_",
                                      "<![CDATA[<]]>",
                                      "東京",
                                      "</t><t>b",
                                      "</t></si><si><t>",
                                      std::string(60000, 'x'),
                                      "\x80",
                                      "&#x9;"};
    for (std::size_t size = 1; size < 40; ++size)
        texts.push_back(std::string(size, 'y') + (size % 3 == 0 ? "&amp;" : ""));
    SXlsxParts parts, general;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        parts.strStrings += "<si><t>" + texts[i] + (i % 7 == 6 ? "</t></si>\n" : "</t></si>");
        parts.strRows += "<row><c t='s'><v>" + std::to_string(i) + "</v></c></row>";
    }
    general = parts;
    for (std::size_t at = 0; (at = general.strStrings.find("<si>", at)) != std::string::npos; at += 4)
        general.strStrings.insert(at + 3, " ");
    EXPECT_EQ(TableText(parts.File()), TableText(general.File()));
}

TEST(XlsxRows, The1904SystemMovesDatesButNotTimes) {
    SXlsxParts parts = CommonParts("<row r='1'><c r='A1' s='1'><v>0.5</v></c><c r='B1' s='6'><v>0.5</v></c>"
                                   "<c r='C1' s='3'><v>1.5</v></c><c r='D1' t='d'><v>2023-03-15</v></c></row>");
    parts.strFormats.insert(parts.strFormats.rfind("</cellXfs>"), "<xf numFmtId='20'/>");
    parts.strBookProperties = "<workbookPr date1904='true'/>";
    EXPECT_EQ(TableText(parts.File()), "d1462.5 d0.5 '36:00:00' d45000;");
}

TEST(XlsxRows, FirstRowNamesTheColumns) {
    SXlsxParts parts = CommonParts("<row><c t='str'><v> Name </v></c><c/><c t='str'><v>NAME</v></c><c><v>7.5</v></c>"
                                   "<c t='str'><v>F2</v></c><c t='str'><v>name1</v></c></row><row><c><v>1</v></c><c "
                                   "r='F2' t='s'><v>0</v></c></row>");
    // The rows remain valid without their source.
    const auto rows = OpenBytes(parts.File(), true)->OpenTable(u"Sheet1$");
    EXPECT_EQ(rows->GetColumnNames(),
              (std::vector<std::u16string>{u"Name", u"F2", u"NAME1", u"7.5", u"F21", u"name11"}));
    EXPECT_EQ(RowsText(*rows), "1 - - - - 'plain';");
    const auto unnamed = OpenBytes(parts.File())->OpenTable(u"Sheet1$");
    EXPECT_EQ(unnamed->GetColumnNames().back(), u"F6");
    EXPECT_EQ(unnamed->GetRowCount(), 2);
}

using enum EDataType;

const struct {
    EDataType type;
    std::vector<std::string> cells; ///< from the attributes on
    EDataType typeBelowHeader = type;
} typesCases[] = {
    {adDouble,
     {"><v>1</v>", "><v>-0.25</v>", "><v>1E3</v>", "><v>.5</v>", " s='4'><v>" + std::string(305, '9') + "</v>"}},
    {adDouble, {"><v>1</v>", " s='1'/>", "><v>2</v>"}},
    {adVarWChar, {" t='str'><v>Title</v>", "><v>1</v>", "><v>2</v>"}, adDouble},
    {adVarWChar, {" t='str'><v>Title</v>", " s='2'><v>1</v>", " s='1'><v>2</v>"}, adDate},
    {adVarWChar, {" t='str'><v>Title</v>", " s='2'/>"}},
    {adVarWChar, {"><v>1</v>", "><v>2</v>", "><v>3</v>", "><v>x</v>"}},
    {adVarWChar, {"><v>1</v>", "><v>2</v>", "><v>2.</v>", "><v>1.2.3</v>"}},
    {adVarWChar, {"><v>1</v>", "><v>2</v>", "><v>" + std::string(310, '9') + "</v>"}},
    {adVarWChar, {"><v>1</v>", "><v>2</v>", " t='e'><v>#N/A</v>"}},
    {adVarWChar, {"><v>1</v>", "><v>2</v>", " t='b'><v>1</v>"}},
    {adVarWChar, {"><v>1</v>", "><v>2</v>", " s='2'><v>3</v>"}},
    {adVarWChar, {" t='str'><v>1</v>", " t='s'><v>0</v>", " t='inlineStr'><is><t/></is>"}},
    {adBoolean, {" t='b'><v>1</v>", " t='b'><v>0</v>", " t='b'><v>true</v>"}},
    {adVarWChar, {" t='b'><v>1</v>", " t='b'><v>0</v>", " t='b'><v>2</v>"}},
    {adDate,
     {" s='2'><v>45000</v>", " s='2'><v>0.5</v>", " s='2'><v>-7</v>", " s='1'><v>250000</v>",
      " t='d'><v>2023-03-15</v>"}},
    {adVarWChar, {" s='2'><v>45000</v>", " s='2'><v>45001</v>", " s='2'><v>2958466</v>"}},
    {adVarWChar, {" s='2'><v>45000</v>", " s='2'><v>45001</v>", " s='2'><v>x</v>"}},
    {adVarWChar, {" s='3'><v>1</v>", " s='3'><v>2</v>", " t='d'><v>PT1H</v>"}},
    {adDouble, {" s='3'><v>1e10</v>", " s='3'><v>2e10</v>", "><v>1</v>"}},
    {adDouble, {" s='5'><v>0</v>", " s='5'><v>0.0</v>", "><v>1</v>"}},
    {adVarWChar, {" s='5'><v>0</v>", " s='5'><v>0</v>", " s='5'><v>1</v>"}},
    {adVarWChar, {" s='5'><v>-1</v>", " s='5'><v>-2</v>", " s='5'><v>0</v>"}},
};

/// Whatever the order of the rows: that of the sheet or reversed, so that the header comes last.
TEST(XlsxTypes, AColumnHasTheTypeThatItsCellsShare) {
    for (const auto& known : typesCases)
        for (const bool isReversed : {false, true}) {
            std::string rows;
            for (std::size_t i = 1; i <= known.cells.size(); ++i) {
                const std::string reference = "A" + std::to_string(i);
                const std::string& cell = known.cells[i - 1];
                std::string row = "<row r='" + reference.substr(1) + "'><c r='" + reference + "'" + cell;
                row += cell.ends_with("/>") && !cell.starts_with(" t=") ? "</row>" : "</c></row>";
                rows = isReversed ? row + rows : rows + row;
            }
            SCOPED_TRACE(rows);
            SXlsxParts parts = CommonParts(rows);
            parts.strNames = "<definedName name='Rows'>Sheet1!$A:$A</definedName>";
            for (const char16_t* name : {u"Sheet1$", u"Rows"})
                for (const bool hasHeader : {false, true}) {
                    const auto table = OpenBytes(parts.File(), hasHeader)->OpenTable(name);
                    EXPECT_EQ(table->GetColumnTypes().at(0).type, hasHeader ? known.typeBelowHeader : known.type);
                    EXPECT_THAT(RowsText(*table), testing::Not(testing::HasSubstr("but")));
                }
        }
}

/// A reader shows at most 65535 bytes.
TEST(XlsxRows, ExactTextsAreWholeOrAnError) {
    const std::string longest(65538, 'x'), control = std::string(70000, '\n') + "x";
    SXlsxParts parts;
    parts.strStrings = "<si><t>" + longest + "</t></si><si><t>" + control + "</t></si><si><t>short</t></si>";
    parts.strRows = "<row><c t='s'><v>0</v></c><c t='s'><v>1</v></c><c t='s'><v>2</v></c><c t='str'><v>" + longest +
                    "</v></c></row>";
    const auto rows = OpenBytes(parts.File())->OpenTable(u"Sheet1$");
    ASSERT_TRUE(rows->MoveNext());
    for (const std::size_t cut : {0U, 1U}) {
        EXPECT_EQ(Raised([&] { rows->GetExactValue(cut); }), Platform::DB_E_DATAOVERFLOW);
        EXPECT_EQ(rows->GetValue(cut).vt, Platform::VT_BSTR);
    }
    EXPECT_EQ(ValueText(rows->GetExactValue(2).value), "'short'");
    EXPECT_EQ(ValueText(rows->GetExactValue(3).value), "'" + longest + "'");
}

TEST(XlsxTables, SheetsOpenByEveryFormOfTheirNames) {
    Platform::SetAnsiCodePage(65001);
    // In the part, in the list, and in a statement.
    const std::tuple<const char*, const char16_t*, const char16_t*> cases[] = {
        {"Sheet1", u"Sheet1$", u"Sheet1$"},
        {"It's a.b!c", u"'It''s a.b!c$'", u"It''s a.b!c$"},
        {"日本 語", u"'日本 語$'", u"日本 語$"},
        {"2024", u"'2024$'", u"2024$"},
        {"a$", u"'a$$'", u"a$$"},
        {"it''s", u"'it''''s$'", u"it''''s$"},
        {"全角！", u"'全角！$'", u"全角！$"},
        {"Größe_1", u"Größe_1$", u"Größe_1$"},
        {"&lt;x&gt;", u"'<x>$'", u"<x>$"},
        {"😀", u"'😀$'", u"😀$"},
    };
    SXlsxParts parts;
    parts.sheetNames.clear();
    for (const auto& known : cases)
        parts.sheetNames.emplace_back(std::get<0>(known));
    parts.strRows = "<row><c><v>1</v></c></row>";
    const auto source = OpenBytes(parts.File());
    const std::vector<Platform::STableSchema> tables = source->ListTables();
    ASSERT_EQ(tables.size(), std::size(cases));
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const auto& [sheet, listed, made] = cases[i];
        EXPECT_EQ(tables[i].name + tables[i].type, listed + std::u16string(u"TABLE"));
        for (const char16_t* name : {listed, made})
            EXPECT_NO_THROW(source->OpenTable(name)) << sheet;
    }
    EXPECT_NO_THROW(source->OpenTable(u"It's a.b!c$"));
    for (const char16_t* unknown : {u"Sheet2$", u"Sheet1", u"", u"$", u"'Sheet1$", u"Sheet1$'"})
        EXPECT_EQ(Raised([&] { source->OpenTable(unknown); }), Platform::DB_E_NOTABLE);
}

TEST(XlsxTables, DefinedNamesOfPlainRangesFollowTheSheets) {
    SXlsxParts parts;
    parts.sheetNames = {"It's", "Sheet1"};
    parts.strRows = "<row r='2'><c r='B2'><v>1</v></c><c><v>2</v></c></row><row><c r='B3'><v>3</v></c></row>";
    parts.strNames =
        "<definedName name='Area'>'It''s'!$A$1:$C$2</definedName>"
        "<definedName name='Cell'>Sheet1!B3</definedName><definedName name='Columns'>Sheet1!$B:$C</definedName>"
        "<definedName name='Row'>Sheet1!$2:$2</definedName>"
        "<definedName name='Two'>Sheet1!$A$1,Sheet1!$B$1</definedName><definedName name='Gone'>#REF!</definedName>"
        "<definedName name='Formula'>SUM(Sheet1!$A$1)</definedName><definedName name='Constant'>5</definedName>"
        "<definedName name='Hidden' hidden='1'>Sheet1!$A$1</definedName>"
        "<definedName name='Elsewhere'>[1]Sheet1!$A$1</definedName>"
        "<definedName name='Other' localSheetId='1'>'It''s'!$A$1</definedName>"
        "<definedName name='_xlnm.Print_Area' localSheetId='0'>'It''s'!$B$2:$B$3</definedName>";
    const auto source = OpenBytes(parts.File());
    EXPECT_EQ(ListText(*source), u"'It''s$'|Sheet1$|Area|Cell|Columns|Row|'It''s$'Print_Area|");
    const std::pair<const char16_t*, const char*> cases[] = {{u"Area", "- - -;- 1 2;"},
                                                             {u"Cell", "3;"},
                                                             {u"Columns", "- -;1 2;3 -;"},
                                                             {u"Row", "- 1 2;"},
                                                             {u"'It''s$'Print_Area", "1;3;"}};
    for (const auto& [name, rows] : cases)
        EXPECT_EQ(RowsText(*source->OpenTable(name)), rows) << Platform::AnsiFromWide(name);
}

TEST(XlsxPackage, PartsAreFoundByEveryFormOfTheirNames) {
    for (const char* target :
         {"/xl/worksheets/sheet1.xml", "worksheets/../worksheets/./sheet1.xml", "Worksheets/Sheet1.XML",
          "worksheets\\sheet1.xml", "../xl/worksheets/sheet%31.xml", "../../../xl/worksheets/sheet1.xml"}) {
        SXlsxParts parts;
        parts.strRows = "<row><c><v>1</v></c></row>";
        parts.strTarget = target;
        EXPECT_EQ(TableText(parts.File()), "1;") << target;
    }
}

TEST(XlsxPackage, OtherKindsOfSheetsAreNotListedButSheetsWithoutAPartAre) {
    SXlsxParts parts;
    parts.strRows = "<row><c><v>1</v></c></row>";
    parts.strWorkbookPart =
        "<w:workbook xmlns:w='w' xmlns:id='urn:x' xmlns:q='" + std::string(officeNamespace) +
        "'><w:sheets><w:sheet name='Chart' q:id='c'/><w:sheet name='Module' q:id=''/><w:sheet name='Lost' q:id='l'/>"
        "<w:sheet name='Odd' id:id='s'/><w:sheet name='Sheet1' id:id='c' state='veryHidden' "
        "q:id='s'/></w:sheets></w:workbook>";
    const auto source = OpenBytes(parts.File());
    EXPECT_EQ(ListText(*source), u"Module$|Lost$|Odd$|Sheet1$|");
    EXPECT_EQ(RowsText(*source->OpenTable(u"Module$")), "");
    for (const char16_t* name : {u"Lost$", u"Odd$"})
        EXPECT_THROW(source->OpenTable(name), Platform::_com_error);
    EXPECT_EQ(RowsText(*source->OpenTable(u"Sheet1$")), "1;");
}

TEST(XlsxFormats, CodesDistinguishDatesFromNumbers) {
    using Providers::EDateKind;
    const std::pair<EDateKind, std::vector<const char*>> cases[] = {
        {EDateKind::None,
         {"General", "0.00E+00", "#,##0\\ \"days\";[Red]-0", "_(* #,##0.00_);_(* (#,##0.00)", "[$-411]#,##0_d",
          "0.0 kg", "@", "", "\"open", "[open", "\\", "[>=100]0;[Yellow]0", "0;;;d"}},
        {EDateKind::Date,
         {"yyyy-mm-dd", "[$-409]d\\-mmm;@", "[$-411]ge.m.d", "ggge\"年\"", "aaaa", "mmm", ";;d", "m/d/yy h:mm",
          "yy;;;", "yy;@"}},
        {EDateKind::Time, {"h:mm AM/PM", "mm:ss.0", "h\"時\"mm\"分\""}},
        {EDateKind::Elapsed, {"[h]:mm", "[mm]:ss", "[SS].00", "[h]:mm;-[h]:mm"}},
    };
    for (const auto& [kind, codes] : cases)
        for (const char* code : codes)
            EXPECT_EQ(Providers::CFormatCode(code).CommonKind(), kind) << code;
    // The kinds of 200, 1, 0 and -1.
    const std::pair<const char*, std::array<EDateKind, 4>> varying[] = {
        {"yy;0", {EDateKind::Date, EDateKind::Date, EDateKind::Date, EDateKind::None}},
        {"0;h:mm;yy;@", {EDateKind::None, EDateKind::None, EDateKind::Date, EDateKind::Time}},
        {"[=0]?;-[h]:mm;[hh]:mm", {EDateKind::Elapsed, EDateKind::Elapsed, EDateKind::None, EDateKind::Elapsed}},
        {"[Red][>=100]0;yy", {EDateKind::None, EDateKind::Date, EDateKind::Date, EDateKind::Date}},
        {"[<=0]0;[>1.5E+2]yy;h", {EDateKind::Date, EDateKind::Time, EDateKind::None, EDateKind::None}},
        {"[<0]0;h;yy", {EDateKind::Time, EDateKind::Time, EDateKind::Date, EDateKind::None}},
        {"[<>1]yy", {EDateKind::Date, EDateKind::None, EDateKind::Date, EDateKind::Date}},
        {"0;;yy", {EDateKind::None, EDateKind::None, EDateKind::Date, EDateKind::None}},
    };
    for (const auto& [text, kinds] : varying) {
        const Providers::CFormatCode code(text);
        EXPECT_EQ(code.CommonKind(), std::nullopt) << text;
        EXPECT_EQ((std::array{code.KindOf(200), code.KindOf(1), code.KindOf(0), code.KindOf(-1)}), kinds) << text;
    }
}

TEST(SharedStrings, AreLimitedInSize) {
    const std::string text((1U << 20) - 16, 'x');
    for (const std::uint64_t packedSize : {0U, 1U << 20}) {
        Providers::CTextPool pool(packedSize);
        for (std::uint64_t i = 0; i < 56 + 16 * (packedSize >> 20); ++i)
            pool.Add(text);
        EXPECT_THROW(pool.Add(""), Providers::CSourceError) << packedSize;
    }
}

} // namespace
} // namespace NSTQ::Tests
