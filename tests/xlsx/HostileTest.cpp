// Workbooks made to do harm, or broken: each ends with E_FAIL and a description, soon and without much memory.
#include "xlsx/XlsxBuilder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>

namespace NSTQ::Tests {
namespace {

std::string Repeat(std::string_view text, std::size_t count) {
    std::string repeated;
    repeated.reserve(text.size() * count);
    while (count-- > 0)
        repeated += text;
    return repeated;
}

struct SHostileCase {
    const char* title;
    std::function<void(SXlsxParts&)> spoil;
    const char* word; ///< of the description
};

const SHostileCase hostileCases[] = {
    {"DOCTYPE with entities that multiply",
     [](SXlsxParts& p) { p.strSheetPart = "<!DOCTYPE x [<!ENTITY a 'aaaa'>]><worksheet>&a;</worksheet>"; },
     "DOCTYPE"},
    {"DOCTYPE of an outside file in the workbook",
     [](SXlsxParts& p) { p.strWorkbookPart = "<!DOCTYPE x SYSTEM 'file:///etc/passwd'><workbook/>"; }, "DOCTYPE"},
    {"an entity that nobody declared", [](SXlsxParts& p) { p.strRows = "<row><c t='str'><v>&a;</v></c></row>"; },
     "entity"},
    {"a sheet outside the package",
     [](SXlsxParts& p) {
         p.strTarget = "http://example.com/sheet1.xml";
         p.strSheetMode = "TargetMode='External'";
     },
     "no part of its own"},
    {"a million nested elements", [](SXlsxParts& p) { p.strRows = Repeat("<row>", 1000000); }, "nested"},
    {"a million nested elements in a text", [](SXlsxParts& p) { p.strStrings = "<si>" + Repeat("<r>", 1000000); },
     "nested"},
    {"100000 attributes", [](SXlsxParts& p) { p.strRows = "<row " + Repeat("a='' ", 100000) + "/>"; }, "attributes"},
    {"a cell right of the grid", [](SXlsxParts& p) { p.strRows = "<row><c r='XFE1'><v>1</v></c></row>"; }, "XFE1"},
    {"a cell below the grid", [](SXlsxParts& p) { p.strRows = "<row><c r='A1048577'/></row>"; }, "A1048577"},
    {"a row below the grid", [](SXlsxParts& p) { p.strRows = "<row r='1048577'/>"; }, "1048577"},
    {"a row that follows the last", [](SXlsxParts& p) { p.strRows = "<row r='1048576'/><row/>"; }, "1048577"},
    {"a row 0", [](SXlsxParts& p) { p.strRows = "<row r='0'/>"; }, "grid"},
    {"a row with a number too long", [](SXlsxParts& p) { p.strRows = "<row r='99999999999999999999'/>"; }, "grid"},
    {"a cell that follows the last", [](SXlsxParts& p) { p.strRows = "<row r='7'><c r='XFD7'/><c/></row>"; },
     "row 7"},
    {"a shared text that there is not", [](SXlsxParts& p) { p.strRows = "<row><c t='s'><v>7</v></c></row>"; },
     "shared"},
    {"a negative shared text", [](SXlsxParts& p) { p.strRows = "<row><c t='s'><v>-1</v></c></row>"; }, "shared"},
    {"a style that is none", [](SXlsxParts& p) { p.strRows = "<row><c s='x'><v>1</v></c></row>"; }, "style"},
    {"tags that do not match", [](SXlsxParts& p) { p.strRows = "<row><c></row></c>"; }, "end tag"},
    {"a sheet that ends within a row", [](SXlsxParts& p) { p.strSheetPart = "<worksheet><sheetData><row><c><v>1"; },
     "too early"},
    {"damage behind the cells", [](SXlsxParts& p) { p.strSheetPart = "<worksheet><sheetData/><a></b></worksheet>"; },
     "end tag"},
    {"no sheet but something else", [](SXlsxParts& p) { p.strSheetPart = "<chartsheet/>"; }, "chartsheet"},
    {"no workbook but something else", [](SXlsxParts& p) { p.strWorkbookPart = "<document/>"; }, "document"},
    {"a binary workbook", [](SXlsxParts& p) { p.strWorkbookPart = "\x83\x01\x00\x80"; }, "workbook.xml"},
    {"a sheet without a part", [](SXlsxParts& p) { p.strTarget = "worksheets/none.xml"; }, "missing"},
    {"a sheet size that is too small", [](SXlsxParts& p) { p.isDeflated = true, p.sheetForgery.size = 100; },
     "beyond its size"},
    {"a sheet with another checksum", [](SXlsxParts& p) { p.sheetForgery.crc = 100; }, "checksum"},
    {"a sheet of 100 MB of comments",
     [](SXlsxParts& p) {
         p.isDeflated = true;
         p.strRows = Repeat("<!--" + std::string(1000000, ' ') + "-->", 100);
     },
     "unfolds more than"},
    {"shared texts of 50 MB of blanks",
     [](SXlsxParts& p) {
         p.isDeflated = true;
         p.strStrings = Repeat("<si><t>" + std::string(1000000, ' ') + "</t></si>", 50);
     },
     "unfolds more than"},
    {"a text of many pieces without end",
     [](SXlsxParts& p) {
         p.strStrings = "<si>" + Repeat("<t>0123456789012345678901234567890123456789</t>", 400000) + "</si>";
     },
     "a text of more"},
};

std::string FailureOf(const std::string& bytes) {
    try {
        const auto source = OpenBytes(bytes);
        RowsText(*source->OpenTable(u"Sheet1$"));
        return "nothing raised";
    } catch (const Platform::_com_error& error) {
        EXPECT_EQ(error.Error(), Platform::E_FAIL);
        return error.Description();
    }
}

TEST(XlsxHostile, EndsSoonWithADescription) {
    using namespace std::chrono;
    for (const SHostileCase& hostile : hostileCases) {
        SXlsxParts parts;
        parts.strRows = "<row><c t='inlineStr'><is><t>1</t></is></c></row>";
        hostile.spoil(parts);
        const std::string bytes = parts.Zip().Finish();
        const auto begin = steady_clock::now();
        const std::string failure = FailureOf(bytes);
        EXPECT_LT(duration_cast<milliseconds>(steady_clock::now() - begin).count(), 5000) << hostile.title;
        EXPECT_TRUE(failure.starts_with("book.xlsx: ")) << hostile.title << ": " << failure;
        EXPECT_NE(failure.find(hostile.word), std::string::npos) << hostile.title << ": " << failure;
    }
}

TEST(XlsxHostile, OtherFilesAreRefusedWithAReason) {
    const struct {
        std::string bytes;
        const char* word;
    } cases[] = {
        {"", "not a zip package"},
        {"a,b,c\r\n", "not a zip package"},
        {std::string("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8) + std::string(5000, '\0'), "compound file"},
        {CZipBuilder().Finish(), "main document"},
        {CZipBuilder().Add("content.xml", "<office/>").Finish(), "main document"},
    };
    for (const auto& known : cases)
        EXPECT_NE(FailureOf(known.bytes).find(known.word), std::string::npos) << known.word;
    try {
        Providers::OpenXlsx(Platform::SSourceOptions{"/no/such/book.xlsx", "", false});
        ADD_FAILURE();
    } catch (const Platform::_com_error& error) {
        EXPECT_EQ(error.Error(), Platform::E_FAIL);
        EXPECT_STREQ(error.Description(), "/no/such/book.xlsx: the file cannot be opened (error 3)");
    }
}

TEST(XlsxHostile, NoCutOfAFileLeadsAstray) {
    SXlsxParts parts;
    parts.strRows = "<row><c><v>1</v></c></row>";
    const std::string whole = parts.Zip().Finish();
    for (std::size_t size = 0; size < whole.size(); size += 7)
        EXPECT_NE(FailureOf(whole.substr(0, size)), "nothing raised") << size;
}

} // namespace
} // namespace NSTQ::Tests
