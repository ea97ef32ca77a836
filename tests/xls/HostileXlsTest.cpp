// Workbooks of records made to do harm, or broken: each ends with E_FAIL and a description.
#include "xls/XlsBuilder.h"

#include <gtest/gtest.h>

#include <functional>

namespace NSTQ::Tests {
namespace {

using namespace std::string_literals;

std::string FailureOf(const std::string& bytes) {
    try {
        const auto source = OpenXlsBytes(bytes);
        for (const Platform::STableSchema& table : source->ListTables())
            RowsText(*source->OpenTable(table.strName));
        return "nothing raised";
    } catch (const Platform::_com_error& error) {
        EXPECT_EQ(error.Error(), Platform::E_FAIL);
        return error.Description();
    }
}

std::string Shared(const std::string& texts, std::uint32_t count = 0xFFFFFFFF) {
    return Record(ERecord::Sst, Int(count, 4) + Int(count, 4) + texts);
}

const struct {
    const char* title;
    std::function<void(SXlsParts&)> spoil;
    const char* word; ///< of the description
} hostileCases[] = {
    {"a column right of the grid", [](SXlsParts& p) { p.sheets[0].strCells = Cell(ERecord::Rk, 0, 256, Int(0, 4)); },
     "outside the grid"},
    {"a run right of the grid",
     [](SXlsParts& p) { p.sheets[0].strCells = Record(ERecord::MulRk, Int(0) + Int(255) + std::string(14, '\0')); },
     "outside the grid"},
    {"a run without cells", [](SXlsParts& p) { p.sheets[0].strCells = Record(ERecord::MulRk, Int(0) + Int(0)); },
     "too short"},
    {"a number cut short", [](SXlsParts& p) { p.sheets[0].strCells = Cell(ERecord::Number, 0, 0, "1234567"); },
     "too short"},
    {"a formula cut short", [](SXlsParts& p) { p.sheets[0].strCells = Cell(ERecord::Formula, 0, 0, "1234567"); },
     "too short"},
    {"a text longer than its cell",
     [](SXlsParts& p) { p.sheets[0].strCells = Cell(ERecord::Label, 0, 0, Int(0xFFFF) + Narrow("ab")); },
     "too early"},
    {"a formula's text that ends in the middle",
     [](SXlsParts& p) {
         p.sheets[0].strCells = Cell(ERecord::Formula, 0, 0, Int(0, 6) + Int(0xFFFF)) +
                                Record(ERecord::String, Int(9) + Narrow("ab")) + Record(ERecord::Continue);
     },
     "too early"},
    {"half a character", [](SXlsParts& p) { p.sheets[0].strCells = Cell(ERecord::Label, 0, 0, Int(2) + "\1ab\0"s); },
     "within a char"},
    {"a shared text that there is not",
     [](SXlsParts& p) {
         p.sheets[0].strCells = Cell(ERecord::LabelSst, 0, 0, Int(1, 4));
         p.strShared = Shared(Int(1) + Narrow("a"));
     },
     "shared text that there is not: 1"},
    {"a shared text of no length", [](SXlsParts& p) { p.strShared = Shared("\1"); }, "too early"},
    {"shared texts with formats without end",
     [](SXlsParts& p) { p.strShared = Shared(Int(1) + "\x0C\xFF\xFF\xFF\xFF\xFF\xFF"s + "a"); }, "too early"},
    {"a sheet behind the end", [](SXlsParts& p) { p.sheets[0].position = 0xFFFFFFFF; }, "behind the stream's end"},
    {"a sheet that is the workbook", [](SXlsParts& p) { p.sheets[0].position = 0; }, "no worksheet begins"},
    {"a sheet within a record", [](SXlsParts& p) { p.sheets[0].position = 2; }, "ends within the record"},
    {"a chart that does not end", [](SXlsParts& p) { p.sheets[0].strCells = p.Begin(0x20) + p.Begin(0x20); },
     "within a chart"},
    {"a sheet's entry cut short", [](SXlsParts& p) { p.strGlobals = Record(ERecord::BoundSheet, "abcdef"); },
     "too short"},
    {"a sheet's name cut short", [](SXlsParts& p) { p.strGlobals = Record(ERecord::BoundSheet, "abcd\0\0\x9\0a"s); },
     "too early"},
    {"more extern sheets than there are",
     [](SXlsParts& p) { p.strGlobals = Record(ERecord::ExternSheet, "\xFF\xFF"); }, "too early"},
    {"a name cut short",
     [](SXlsParts& p) { p.strGlobals = Record(ERecord::Name, Int(0) + Int(0x900, 2) + Int(11) + Int(0, 8) + "a"); },
     "too early"},
    {"a format cut short", [](SXlsParts& p) { p.strGlobals = Record(ERecord::Format, "\1\0\xFF\0"s); }, "too early"},
};

TEST(XlsHostile, EndsWithADescription) {
    for (const auto& hostile : hostileCases) {
        SXlsParts parts;
        parts.sheets[0].strCells = Number(0, 0, 1);
        hostile.spoil(parts);
        EXPECT_NE(FailureOf(parts.Stream()).find(hostile.word), std::string::npos)
            << hostile.title << ": " << FailureOf(parts.Stream());
    }
}

TEST(XlsHostile, OtherFilesAreRefusedWithAReason) {
    const struct {
        std::string bytes;
        const char* failure;
    } cases[] = {
        {"", "the stream of the workbook is empty"},
        {"abc", "the stream of the workbook is empty"},
        {"a,b,c\r\n", "the stream of the workbook ends within the record at byte 0"},
        {Record(ERecord::Eof), "not a workbook: its stream does not begin as one"},
        {Record(ERecord::Bof2, Int(2) + Int(0x10)), "a workbook of Excel 2.x, too old to be read"},
        {Record(ERecord::Bof3, Int(3) + Int(0x10)), "a workbook of Excel 3.0, too old to be read"},
        {Record(ERecord::Bof4, Int(4) + Int(0x10)), "a workbook of Excel 4.0, too old to be read"},
        {Record(ERecord::Bof, Int(0x700) + Int(5)), "a workbook of an unknown version"},
        {Record(ERecord::Bof, "abc"), "the record at byte 0 is too short"},
        {SXlsParts().Begin(5), "the stream of the workbook ends before its sheets"},
    };
    for (const auto& known : cases)
        EXPECT_EQ(FailureOf(known.bytes), std::string("book.xls: ") + known.failure);
}

TEST(XlsHostile, OneDamagedSheetLeavesTheOthersReadable) {
    SXlsParts parts;
    parts.sheets = {
        {"Bad", Record(ERecord::Number, "x")}, {"Nowhere", "", 0, 0, 0x7FFFFFFF}, {"Good", Number(0, 0, 1)}};
    const auto source = OpenXlsBytes(parts.Stream());
    EXPECT_EQ(ListText(*source), u"Bad$|Nowhere$|Good$|");
    EXPECT_THROW(source->OpenTable(u"Bad$"), Platform::_com_error);
    EXPECT_THROW(source->OpenTable(u"Nowhere$"), Platform::_com_error);
    EXPECT_EQ(RowsText(*source->OpenTable(u"Good$")), "1;");
}

TEST(XlsHostile, NoCutOfAFileLeadsAstray) {
    SXlsParts parts;
    parts.strShared = Shared(Int(1) + Narrow("a"));
    parts.sheets[0].strCells = Cell(ERecord::LabelSst, 0, 0, Int(0, 4)) + Label(0, 1, "b");
    const std::string whole = parts.Stream();
    ASSERT_EQ(FailureOf(whole), "nothing raised");
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_NE(FailureOf(whole.substr(0, size)), "nothing raised") << size;
}

} // namespace
} // namespace NSTQ::Tests
