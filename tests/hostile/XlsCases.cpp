// Workbooks of BIFF records made to do harm, or damaged.
#include "hostile/Hostile.h"

#include "support/Repeat.h"
#include "xls/XlsBuilder.h"

namespace NSTQ::Tests {
namespace {

using namespace std::string_literals;

/// Skipped, whatever it contains.
constexpr ERecord mergedCells{0xE5};

struct SSpoiled {
    const char* title;
    std::function<void(SXlsParts&)> spoil;
    const char* outcome;
};

std::function<void(SXlsParts&)> Cells(std::string records) {
    return [=](SXlsParts& parts) { parts.sheets[0].strCells = records; };
}
std::function<void(SXlsParts&)> Globals(std::string records) {
    return [=](SXlsParts& parts) { parts.strGlobals = records; };
}
std::function<void(SXlsParts&)> Shared(const std::string& texts, std::uint32_t count = 0xFFFFFFFF) {
    return [=](SXlsParts& parts) { parts.strShared = Record(ERecord::Sst, Int(count, 4) + Int(count, 4) + texts); };
}

/// Two rows, the second before the first, of so many cells each, in records with as many cells as they can have.
std::function<void(SXlsParts&)> ReversedRows(std::size_t cells) {
    return [=](SXlsParts& parts) {
        constexpr std::size_t runSize = 255;
        parts.sheets[0].strCells.clear();
        for (const unsigned row : {1U, 0U})
            parts.sheets[0].strCells +=
                Repeat(Record(ERecord::MulRk, Int(row) + Int(0) + std::string(6 * runSize, '\0') + Int(0)),
                       (cells + runSize - 1) / runSize);
    };
}

/// As many rows as there can be, the last one first: a number, a text, and shared strings, the last one first.
void FillSheet(SXlsParts& parts) {
    constexpr unsigned rows = 65'536, columns = 8, perRecord = 500;
    parts.strShared = Repeat(
        [](std::size_t record) {
            const auto type = record == 0 ? ERecord::Sst : ERecord::Continue;
            return Record(type, (record == 0 ? Int(rows, 4) + Int(rows, 4) : "") +
                                    Repeat(Int(9) + Narrow("some text"), perRecord));
        },
        rows / perRecord + 1);
    for (unsigned row = rows; row-- > 0;) {
        parts.sheets[0].strCells += Number(row, 0, row) + Label(row, 1, "some text");
        for (unsigned column = 2; column < columns; ++column)
            parts.sheets[0].strCells += Cell(ERecord::LabelSst, row, column, Int(row, 4));
    }
}

const std::string textResult = Cell(ERecord::Formula, 0, 0, Int(0, 6) + Int(0xFFFF));

const SSpoiled spoiled[] = {
    {"a column right of the grid", Cells(Cell(ERecord::Rk, 0, 256, Int(0, 4))), "outside the grid"},
    {"a run right of the grid", Cells(Record(ERecord::MulRk, Int(0) + Int(255) + std::string(14, '\0'))),
     "outside the grid"},
    {"a run without cells", Cells(Record(ERecord::MulRk, Int(0) + Int(0))), "too short"},
    {"a truncated number", Cells(Cell(ERecord::Number, 0, 0, "1234567")), "too short"},
    {"a text longer than its cell", Cells(Cell(ERecord::Label, 0, 0, Int(0xFFFF) + Narrow("ab"))), "too early"},
    {"a formula's text that ends in the middle",
     Cells(textResult + Record(ERecord::String, Int(9) + Narrow("ab")) + Record(ERecord::Continue)), "too early"},
    {"a formula without its text", Cells(textResult), "1 rows"},
    {"a formula whose text is truncated", Cells(textResult + Record(ERecord::String)), "too short"},
    {"half a character", Cells(Cell(ERecord::Label, 0, 0, Int(2) + "\1ab\0"s)), "within a char"},
    {"a chart that does not end", Cells(SXlsParts().Begin(0x20) + SXlsParts().Begin(0x20)), "within a chart"},
    {"a shared string out of range", Cells(Cell(ERecord::LabelSst, 0, 0, Int(1, 4))),
     "shared string index 1 is out of range"},
    {"4 billion shared strings claimed", Shared(Int(1) + Narrow("a")), "1 rows"},
    {"no shared strings claimed", Shared(Int(1) + Narrow("a"), 0), "shared string index 0"},
    {"4 billion merged cells", Cells(Number(0, 0, 1) + Record(mergedCells, Int(~0U, 4))), "1 rows"},
    {"a truncated length of a shared string", Shared("\1"), "too early"},
    {"shared strings with formats without end", Shared(Int(1) + "\x0C\xFF\xFF\xFF\xFF\xFF\xFF"s + "a"), "too early"},
    {"a truncated entry of a sheet", Globals(Record(ERecord::BoundSheet, "abcdef")), "too short"},
    {"a truncated name of a sheet", Globals(Record(ERecord::BoundSheet, "abcd\0\0\x9\0a"s)), "too early"},
    {"more extern sheets than there are", Globals(Record(ERecord::ExternSheet, "\xFF\xFF")), "too early"},
    {"a truncated defined name", Globals(Record(ERecord::Name, Int(0) + Int(0x900, 2) + Int(11) + Int(0, 8) + "a")),
     "too early"},
    {"a sheet behind the end", [](SXlsParts& p) { p.sheets[0].position = 0xFFFFFFFF; },
     "beyond the end of the stream"},
    {"a sheet that is the workbook", [](SXlsParts& p) { p.sheets[0].position = 0; }, "no worksheet at the position"},
    {"100000 sheets at one place",
     [](SXlsParts& p) {
         p.sheets.resize(100'000, {"Sheet1", "", 0, 0, 0}), p.sheets[0].position.reset();
     },
     "1 rows"},
    {"a full sheet out of order", FillSheet, "65536 rows"},
    {"as many cells out of order as fit", ReversedRows(1'040'000), "2 rows"},
    {"more cells out of order", ReversedRows(1'060'000), "beyond a limit: "},
};

} // namespace

std::vector<SHostileCase> XlsCases() {
    const auto make = [](const std::function<void(SXlsParts&)>& spoil) {
        SXlsParts good;
        good.sheets[0].strCells = Cell(ERecord::LabelSst, 0, 0, Int(0, 4));
        Shared(Int(1) + Narrow("a"), 1)(good);
        spoil(good);
        return good.Stream();
    };
    const std::string whole = make([](SXlsParts&) {});
    std::vector<SHostileCase> cases{{"a valid one", [=] { return whole; }, "1 rows"}};
    AddSpoiled(cases, spoiled, make);
    AddTruncated(cases, whole, 0, 1, whole.size());
    return cases;
}

} // namespace NSTQ::Tests
