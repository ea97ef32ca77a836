// xls workbooks that are unusual but valid, and their rows. tests/hostile has the malicious ones.
#include "support/Chosen.h"
#include "support/Raised.h"
#include "xls/XlsBuilder.h"

#include <gtest/gtest.h>

#include <set>

namespace NSTQ::Tests {
namespace {

using namespace std::string_literals;

/// A result of a formula that is not a number.
std::string Result(unsigned kind, unsigned value = 0) {
    return Int(kind) + Int(value, 4) + Int(0xFFFF) + Int(0, 8);
}

std::string Formula(unsigned row, unsigned column, std::string_view result) {
    return Cell(ERecord::Formula, row, column, result);
}

std::string Error(unsigned column, unsigned code) {
    return Cell(ERecord::BoolErr, 0, column, Int(code, 1) + Int(1, 1));
}

/// The values: rows end with ;, - is null, texts are quoted, dates begin with d. FormatsOf has the styles 0 to 4.
struct SCellsCase {
    const char* title;
    std::string cells;
    const char* expected;
    bool isBiff8 = true;
};

const SCellsCase cellsCases[] = {
    {"numbers",
     Number(0, 0, 12.5) + Cell(ERecord::Rk, 0, 1, Int(0x40490FD8, 4)) + Cell(ERecord::Rk, 0, 2, Int(0xFFFFFFFE, 4)) +
         Cell(ERecord::Rk, 0, 3, Int(12345 << 2 | 3, 4)) + Cell(ERecord::Rk, 0, 4, Int(0x40590001, 4)),
     "12.5 50.123779296875 -1 123.45 1;"},
    {"numbers in a run",
     Record(ERecord::MulRk, Int(2) + Int(1) + Int(0) + Int(7 << 2 | 2, 4) + Int(1) + Int(45000 << 2 | 2, 4) + Int(2)),
     "7 d45000;"},
    {"columns with one type and with several",
     Number(0, 0, 45000, 1) + Number(0, 1, 45000, 1) + Number(0, 2, 1) + Number(0, 3, 1) + Number(1, 0, 150000, 1) +
         Number(1, 1, 3e6, 1) + Number(1, 2, -1e300) + Label(1, 3, "a"),
     "d45000 d45000 1 1;d150000 3000000 -1e+300 'a';"},
    {"blank cells",
     Record(ERecord{0x201}, Int(0) + Int(0) + Int(1)) + Number(2, 3, 1) +
         Record(ERecord{0xBE}, Int(9) + Int(0) + Int(1) + Int(1) + Int(1)),
     "1;"},
    {"booleans and errors",
     Cell(ERecord::BoolErr, 0, 0, Int(1, 1) + Int(0, 1)) + Cell(ERecord::BoolErr, 0, 1, Int(0)) + Error(2, 0) +
         Error(3, 0x07) + Error(4, 0x1D) + Error(5, 0x2A) + Error(6, 99),
     "true false '#NULL!' '#DIV/0!' '#NAME?' '#N/A' '#UNKNOWN!';"},
    {"texts in their cells",
     Label(0, 0, "a\xE9z") + Label(0, 1, u"東京") + Cell(ERecord::RString, 0, 2, Int(1) + Narrow("b") + Int(0)) +
         Label(0, 3, "") + Label(0, 4, "_x0041_ ") + Cell(ERecord::Label, 0, 5, Int(0)) + Formula(0, 6, Result(0)) +
         Record(ERecord::String, Int(0)),
     "'aéz' '東京' 'b' '' '_x0041_ ' '' '';"},
    {"a text with a continuation",
     Cell(ERecord::Label, 0, 0, Int(4) + Narrow("ab")) + Record(ERecord::Continue, Wide(u"京c")), "'ab京c';"},
    {"results of formulas",
     Formula(0, 0, Double(2.5) + Int(0, 8)) + Formula(0, 1, Result(1, 1)) + Formula(0, 2, Result(2, 0x17)) +
         Formula(0, 3, Result(3)) + Cell(ERecord::Formula, 0, 4, Double(45000) + Int(0, 8), 1),
     "2.5 true '#REF!' '' d45000;"},
    {"texts of formulas",
     Formula(0, 0, Result(0)) + Record(ERecord::String, Int(1) + Narrow("a")) + Formula(0, 1, Result(0)) +
         Record(ERecord::SharedFormula, "xxxx") + Record(ERecord::String, Int(2) + Wide(u"x語")) +
         Formula(0, 2, Result(0)) + Record(ERecord::Array, "xxxx") + Record(ERecord::String, Int(3) + Narrow("c")) +
         Record(ERecord::Continue, Narrow("de")) + Formula(0, 3, Result(0)) + Number(0, 4, 7),
     "'a' 'x語' 'cde' '' 7;"},
    {"rows out of order, repeated cells",
     Number(3, 0, 3) + Label(1, 1, u"語") + Cell(ERecord::Rk, 1, 0, Int(6, 4)) + Number(3, 0, 4) +
         Cell(ERecord::BoolErr, 1, 2, Int(1)),
     "1 '語' true;- - -;4 - -;"},
    {"a chart within the sheet",
     Number(0, 0, 1) + SXlsParts().Begin(0x20) + Number(9, 9, 9) + SXlsParts().Begin(0x20) + Record(ERecord::Eof) +
         Record(ERecord::Eof) + Number(1, 0, 2),
     "1;2;"},
    {"dates by format, 28 February 1900, a number out of the range of dates",
     Number(0, 0, 45000.75, 1) + Number(0, 1, 59, 1) + Number(0, 2, 1.5, 2) + Number(0, 3, 45000, 3) +
         Number(0, 4, 1e9, 1) + Number(0, 5, 1, 999) + Number(0, 6, 45000, 4),
     "d45000.75 d60 '36:00:00' 45000 1000000000 1 45000;"},
    {"cells of Excel 2.x in a later sheet",
     Record(ERecord::Integer2, Int(0) + Int(0) + "\1\0\0"s + Int(60000)) +
         Record(ERecord::Number2, Int(0) + Int(1) + "\0\0\0"s + Double(0.5)) +
         Record(ERecord::Label2, Int(0) + Int(2) + "\0\0\0\2ab"s) +
         Record(ERecord::BoolErr2, Int(0) + Int(3) + "\0\0\0\1\0"s),
     "d60000 0.5 'ab' true;", false},
    {"texts of Excel 5.0",
     Cell(ERecord::Label, 0, 0, Int(3) + "a\xE9z"s) + Cell(ERecord::RString, 0, 1, Int(1) + "b\1\0\0"s) +
         Formula(0, 2, Result(0)) + Record(ERecord::String, Int(2) + "xy"s),
     "'aéz' 'b' 'xy';", false},
    {"the corner of the grid", Number(65535, 255, 1), "1;"},
    {"no cells", "", ""},
};

SXlsParts FormatsOf(bool isBiff8) {
    SXlsParts parts;
    parts.isBiff8 = isBiff8;
    const auto format = [&](unsigned id, std::string_view code) {
        return Record(ERecord::Format, Int(id) + (isBiff8 ? Int(code.size()) + Narrow(code)
                                                          : Int(code.size(), 1) + std::string(code)));
    };
    parts.strGlobals = Record(ERecord::CodePage, Int(1252)) + format(164, "[h]:mm") + format(165, "0.00\"d\"");
    parts.strGlobals += Record(ERecord::Format, Int(166) + "\4\0\0yy"s) + Record(ERecord::Format, Int(167));
    for (const unsigned id : {0U, 22U, 164U, 165U, 166U})
        parts.strGlobals += Record(ERecord::Xf, Int(0) + Int(id) + std::string(16, '\0'));
    return parts;
}

TEST(XlsRows, OddSheetsHaveTheirCells) {
    for (const SCellsCase& odd : cellsCases)
        EXPECT_EQ(XlsText(odd.cells, FormatsOf(odd.isBiff8)), odd.expected) << odd.title;
}

TEST(XlsRows, The1904SystemMovesDatesButNotTimes) {
    SXlsParts parts = FormatsOf(true);
    parts.strGlobals += Record(ERecord::DateMode, Int(1));
    EXPECT_EQ(XlsText(Number(0, 0, 0.5, 1) + Number(0, 1, 1.5, 2), parts), "d1462.5 '36:00:00';");
}

TEST(XlsRows, TextsBeforeExcel97AreInTheirCodePage) {
    constexpr unsigned none = 99;
    const std::tuple<unsigned, const char*, const char*, unsigned> cases[] = {
        {932, "\x93\x8C\x8B\x9E", "'東京';", 932},
        {1252, "\x80\xE9", "'€é';", 932},
        {10000, "\x8E\xF0", "'é\uF8FF';", 932},
        {0x8000, "\x8E", "'é';", 932},
        {0x8001, "\xE9", "'é';", 932},
        {0, "\x93\x8C", "'東';", 932},
        {none, "\x93\x8C", "'東';", 932},
        {none, "\xE9", "'é';", 1252},
        {none, "\xE9", "'é';", 65001},
        {65001, "\xE6\x9D\xB1", "'東';", 932}};
    const auto text = [](unsigned page, const std::string& bytes) {
        SXlsParts parts;
        parts.isBiff8 = false;
        if (page != none)
            parts.strGlobals = Record(ERecord::CodePage, Int(page));
        // The code page of a format does not matter.
        parts.strGlobals += Record(ERecord::Format, Int(164) + "\2\x80" + "0");
        return XlsText(Cell(ERecord::Label, 0, 0, Int(bytes.size()) + bytes), parts);
    };
    for (const auto& [page, bytes, expected, ansiPage] : cases) {
        const CAnsiPage ansi(ansiPage);
        EXPECT_EQ(text(page, bytes), expected) << page;
    }
    EXPECT_EQ(CauseOf([&] { text(437, "\x82"); }), "book.xls: its texts are in code page 437, which cannot be read");
}

/// Some programs write a single sheet, without a version.
TEST(XlsBook, ASheetWithoutAWorkbookIsTheOnlySheet) {
    for (const unsigned version : {0U, 0x580U}) {
        const auto source =
            OpenXlsBytes(Record(ERecord::Bof, Int(version) + Int(0x10) + Int(0, 4)) + Number(0, 0, 7) +
                         Cell(ERecord::Label, 0, 1, Int(2) + "ab"s) + Record(ERecord::Eof));
        EXPECT_EQ(ListText(*source), u"Sheet1$|");
        EXPECT_EQ(RowsText(*source->OpenTable(u"Sheet1$")), "7 'ab';");
    }
}

TEST(XlsBook, HiddenAndDamagedSheetsAreListedAndOtherKindsOfSheetsAreNot) {
    SXlsParts parts;
    parts.sheets = {{"Chart", "", 0, 2},
                    {"It's", Number(0, 0, 1), 1},
                    {"Macros", "", 0, 1},
                    {"Q2", Number(0, 0, 2), 2},
                    {"Module", "", 0, 6},
                    {"Bad", Record(ERecord::Number, "x")},
                    {"Nowhere", "", 0, 0, 0x7FFFFFFF},
                    {"Inside", "", 0, 0, 20},
                    {"NoBegin", Number(0, 0, 3), 0, 0, {}, false}};
    for (const bool isBiff8 : {true, false}) {
        parts.isBiff8 = isBiff8;
        const auto source = OpenXlsBytes(parts.Stream());
        EXPECT_EQ(ListText(*source), u"'It''s$'|Q2$|Bad$|Nowhere$|Inside$|NoBegin$|");
        EXPECT_EQ(RowsText(*source->OpenTable(u"Q2$")) + RowsText(*source->OpenTable(u"NoBegin$")), "2;3;");
        for (const char16_t* name : {u"Bad$", u"Nowhere$", u"Inside$"})
            EXPECT_THROW(source->OpenTable(name), Platform::_com_error);
        EXPECT_EQ(RowsText(*source->OpenTable(u"'It''s$'")), "1;");
    }
}

TEST(XlsBook, OtherFilesAreRefusedWithAReason) {
    const std::pair<std::string, std::string> cases[] = {
        {"", "the stream of the workbook is empty"},
        {"a,b,c\r\n", "the stream of the workbook ends within the record at byte 0"},
        {Record(ERecord::Eof), "not a workbook: its stream does not begin with a BOF record"},
        {Record(ERecord::Bof2, Int(2) + Int(0x10)), "a workbook of Excel 2.x, which is not supported"},
        {Record(ERecord::Bof4, Int(4) + Int(0x10)), "a workbook of Excel 4.0, which is not supported"},
        {Record(ERecord::Bof, Int(0x700) + Int(5)), "a workbook of an unknown version"},
        {Record(ERecord::Bof, "abc"), "the record at byte 0 is too short"},
        {SXlsParts().Begin(5), "the stream of the workbook ends before its sheets"},
    };
    for (const auto& [bytes, cause] : cases)
        EXPECT_EQ(CauseOf([&, &file = bytes] { OpenXlsBytes(file); }), "book.xls: " + cause);
}

struct SNameCase {
    std::string strName;
    std::string strFormula;
    unsigned flags = 0;
    unsigned owner = 0; ///< the number of a tab, from 1
};

/// The first tab is a chart, the second one the sheet "Sheet1".
void ExpectNames(const std::vector<SNameCase>& names, bool isBiff8) {
    SXlsParts parts;
    parts.isBiff8 = isBiff8;
    parts.sheets = {{"Chart", "", 0, 2}, {"Sheet1", Number(1, 1, 1) + Number(1, 2, 2) + Number(2, 1, 3)}};
    if (isBiff8)
        parts.strShared = Record(ERecord::SupBook, Int(1) + Int(1) + "\0x"s) + Record(ERecord::SupBook, "\2\0\1\4"s) +
                          Record(ERecord::ExternSheet, Int(4) + Int(1) + Int(1) + Int(1) + Int(0) + Int(1) + Int(1)) +
                          Record(ERecord::Continue, Int(1) + Int(0) + Int(1) + Int(1) + Int(0xFFFE) + Int(0xFFFE));
    for (const SNameCase& name : names)
        parts.strShared +=
            Record(ERecord::Name, Int(name.flags) + Int(0, 1) + Int(name.strName.size(), 1) +
                                      Int(name.strFormula.size()) + Int(0) + Int(name.owner) + Int(0, 4) +
                                      (isBiff8 ? Narrow(name.strName) : name.strName) + name.strFormula);
    const auto source = OpenXlsBytes(parts.Stream());
    EXPECT_EQ(ListText(*source), u"Sheet1$|Area|Cell|Columns|Row|Sheet1$Print_Area|");
    const std::pair<const char16_t*, const char*> cases[] = {{u"Area", "- - -;- 1 2;"},
                                                             {u"Cell", "3;"},
                                                             {u"Columns", "- -;1 2;3 -;"},
                                                             {u"Row", "- 1 2;"},
                                                             {u"Sheet1$Print_Area", "1;3;"}};
    for (const auto& [name, rows] : cases)
        EXPECT_EQ(RowsText(*source->OpenTable(name)), rows) << Platform::AnsiFromWide(name);
}

TEST(XlsBook, DefinedNamesOfPlainRangesFollowTheSheets) {
    const auto area = [](unsigned sheet, unsigned r1, unsigned r2, unsigned c1, unsigned c2, char token = '\x3B') {
        return token + Int(sheet) + Int(r1) + Int(r2) + Int(c1) + Int(c2);
    };
    const auto cell = "\x5A"s + Int(0) + Int(2) + Int(0xC001);
    ExpectNames({{"Area", area(0, 0, 1, 0, 2)},
                 {"Cell", cell},
                 {"Columns", area(0, 0, 0xFFFF, 1, 2, '\x7B')},
                 {"Row", area(0, 1, 1, 0, 255)},
                 {"Hidden", area(0, 0, 1, 0, 2), 1},
                 {"Chart", area(3, 0, 1, 0, 2)},
                 {"Elsewhere", area(1, 0, 1, 0, 2)},
                 {"Several", area(2, 0, 1, 0, 2)},
                 {"Nowhere", area(9, 0, 1, 0, 2)},
                 {"Gone", area(0, 0, 1, 0, 2, '\x3D')},
                 {"Sum", cell + cell + "\3"},
                 {"Five", "\x1E\5\0"s},
                 {"", area(0, 0, 1, 0, 2)},
                 {"\x06", area(0, 1, 2, 1, 1), 0x20, 2},
                 {"\x06", area(0, 1, 2, 1, 1), 0x20, 1},
                 {"\x7F", area(0, 1, 2, 1, 1), 0x20, 2}},
                true);
}

TEST(XlsBook, DefinedNamesOfExcel5) {
    const auto area = [](unsigned sheet, unsigned tab, unsigned r1, unsigned r2, unsigned c1, unsigned c2) {
        return "\x3B"s + Int(sheet) + Int(0, 8) + Int(tab) + Int(tab) + Int(r1) + Int(r2) + Int(c1, 1) + Int(c2, 1);
    };
    ExpectNames({{"Area", area(0xFFFF, 1, 0, 1, 0, 2)},
                 {"Cell", "\x3A"s + Int(0xFFFF) + Int(0, 8) + Int(1) + Int(1) + Int(0xC002) + "\1"},
                 {"Columns", area(0xFFFF, 1, 0, 0x3FFF, 1, 2)},
                 {"Row", area(0xFFFF, 1, 1, 1, 0, 255)},
                 {"Elsewhere", area(1, 1, 0, 1, 0, 2)},
                 {"Deleted", area(0xFFFF, 0xFFFF, 0, 1, 0, 2)},
                 {"\x06", area(0xFFFF, 1, 1, 2, 1, 1), 0x20, 2}},
                false);
}

/// A byte or a character in the table of shared strings; records end only between these.
struct SAtom {
    char16_t value;
    bool isCharacter = false;
    bool isWide = false;
};

void AddSharedText(std::vector<SAtom>& atoms, std::u16string_view text, bool isWide, unsigned runs,
                   unsigned phonetic) {
    const auto addBytes = [&](const std::string& bytes) {
        for (const char byte : bytes)
            atoms.push_back({static_cast<unsigned char>(byte)});
    };
    addBytes(Int(text.size()) + Int((isWide ? 1U : 0U) | (phonetic > 0 ? 4U : 0U) | (runs > 0 ? 8U : 0U), 1));
    addBytes((runs > 0 ? Int(runs) : "") + (phonetic > 0 ? Int(phonetic, 4) : ""));
    for (const char16_t unit : text)
        atoms.push_back({unit, true, isWide});
    addBytes(std::string(runs * 4 + phonetic, 'f'));
}

/// The table with a new record before each of the atoms in `borders`. There, the following characters change between
/// one byte and two if `doChange` is set and they can.
std::string SharedTable(const std::vector<SAtom>& atoms, const std::set<std::size_t>& borders, bool doChange) {
    std::string records;
    std::string body = Int(9, 4) + Int(6, 4);
    ERecord type = ERecord::Sst;
    std::optional<bool> isWide;
    for (std::size_t i = 0; i < atoms.size(); ++i) {
        if (!atoms[i].isCharacter)
            isWide.reset();
        else if (!isWide)
            isWide = atoms[i].isWide;
        if (borders.contains(i)) {
            records += Record(std::exchange(type, ERecord::Continue), body);
            body.clear();
            bool mustBeWide = false;
            for (std::size_t j = i; j < atoms.size() && atoms[j].isCharacter; ++j)
                mustBeWide = mustBeWide || atoms[j].value > 0xFF;
            if (isWide) {
                isWide = mustBeWide || *isWide != doChange;
                body += Int(*isWide ? 1 : 0, 1);
            }
        }
        body += Int(atoms[i].value, isWide.value_or(false) ? 2 : 1);
    }
    return records + Record(type, body);
}

TEST(XlsSharedStrings, AreTheSameWhereverARecordEnds) {
    std::vector<SAtom> atoms;
    AddSharedText(atoms, u"plain é", false, 0, 0);
    AddSharedText(atoms, u"東 京a", true, 0, 0);
    AddSharedText(atoms, u"", false, 0, 0);
    AddSharedText(atoms, u"rich", false, 2, 0);
    AddSharedText(atoms, u"wide", true, 1, 5);
    AddSharedText(atoms, u"x", false, 0, 3);
    std::string cells;
    for (unsigned i = 0; i < 6; ++i)
        cells += Cell(ERecord::LabelSst, 0, i, Int(5 - i, 4));
    SXlsParts parts;
    for (std::size_t first = 0; first < atoms.size(); ++first)
        for (std::size_t second = first; second < atoms.size(); ++second)
            for (const bool doChange : {false, true}) {
                parts.strShared = SharedTable(atoms, {first, second}, doChange);
                ASSERT_EQ(XlsText(cells, parts), "'x' 'wide' 'rich' '' '東 京a' 'plain é';")
                    << first << ' ' << second;
            }
}

} // namespace
} // namespace NSTQ::Tests
