// Workbooks of BIFF records, and compound files around them, made to do harm or damaged.
#include "hostile/Hostile.h"

#include "support/Bytes.h"
#include "support/CompoundBuilder.h"
#include "xls/XlsBuilder.h"

namespace NSTQ::Tests {
namespace {

using namespace std::string_literals;

/// Skipped, whatever it contains.
constexpr ERecord mergedCells{0xE5};

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

const std::string long8224(8224, 'a');
const std::string textResult = Cell(ERecord::Formula, 0, 0, Int(0, 6) + Int(0xFFFF));

const SSpoiled<SXlsParts> spoiled[] = {
    {"a column right of the grid", Cells(Cell(ERecord::Rk, 0, 256, Int(0, 4))), "outside the grid"},
    {"a run right of the grid", Cells(Record(ERecord::MulRk, Int(0) + Int(255) + Int(0, 14))), "outside the grid"},
    {"a run without cells", Cells(Record(ERecord::MulRk, Int(0) + Int(0))), "too short"},
    {"a truncated number", Cells(Cell(ERecord::Number, 0, 0, "1234567")), "too short"},
    {"a text longer than its cell", Cells(Cell(ERecord::Label, 0, 0, Int(0xFFFF) + Narrow("ab"))), "too early"},
    {"a formula's text that ends in the middle",
     Cells(textResult + Record(ERecord::String, Int(9) + Narrow("ab")) + Record(ERecord::Continue)), "too early"},
    {"a formula without its text", Cells(textResult), "1 rows"},
    {"a formula whose text is truncated", Cells(textResult + Record(ERecord::String)), "too short"},
    {"half a character", Cells(Cell(ERecord::Label, 0, 0, Int(2) + "\1ab\0"s)), "within a char"},
    {"a chart that does not end", Cells(SXlsParts().Begin(0x20) + SXlsParts().Begin(0x20)), "within a chart"},
    {"a shared string out of range", Cells(Cell(ERecord::LabelSst, 0, 0, Int(1, 4))), "shared string index 1 is out"},
    {"4 billion shared strings claimed", Shared(Int(1) + Narrow("a")), "1 rows"},
    {"no shared strings claimed", Shared(Int(1) + Narrow("a"), 0), "shared string index 0"},
    {"4 billion merged cells", Cells(Number(0, 0, 1) + Record(mergedCells, Int(~0U, 4))), "1 rows"},
    {"a truncated length of a shared string", Shared("\1"), "too early"},
    {"shared strings with formats without end", Shared(Int(1) + "\x0C\xFF\xFF\xFF\xFF\xFF\xFF"s + "a"), "too early"},
    {"a truncated entry of a sheet", Globals(Record(ERecord::BoundSheet, "abcdef")), "too short"},
    {"a truncated name of a sheet", Globals(Record(ERecord::BoundSheet, "abcd\0\0\x9\0a"s)), "too early"},
    {"more extern sheets than there are", Globals(Record(ERecord::ExternSheet, "\xFF\xFF")), "too early"},
    {"a cut name", Globals(Record(ERecord::Name, Int(0) + Int(0x900) + Int(11) + Int(0, 8) + "a")), "too early"},
    {"a sheet behind the end", [](SXlsParts& p) { p.sheets[0].position = 0xFFFFFFFF; }, "beyond the end"},
    {"a sheet that is the workbook", [](SXlsParts& p) { p.sheets[0].position = 0; }, "no worksheet at the position"},
    {"100000 sheets at one place",
     [](SXlsParts& p) {
         p.sheets.resize(100'000, {"Sheet1", "", 0, 0, 0}), p.sheets[0].position.reset();
     },
     "1 rows"},
    {"100000 empty continuations", Cells(Label(0, 0, "a") + Repeat(Record(ERecord::Continue), 100'000)), "1 rows"},
    {"many long continuations", Cells(Label(0, 0, "a") + Repeat(Record(ERecord::Continue, long8224), 499)), "1 rows"},
    {"100000 formats", Globals(Repeat(Record(ERecord::Format, Int(164) + Int(1) + Narrow("0")), 100'000)), "1 rows"},
    {"100000 styles", Globals(Repeat(Record(ERecord::Xf, Int(0, 20)), 100'000)), "1 rows"},
    {"100000 rows of one number", Cells(Repeat(Number(0, 0, 1), 100'000)), "1 rows"},
    {"a full sheet out of order", FillSheet, "65536 rows"},
    {"as many cells out of order as fit", ReversedRows(1'040'000), "2 rows"},
    {"more cells out of order", ReversedRows(1'060'000), "beyond a limit: "},
};

using TFile = SCompoundBytes;

constexpr char16_t book[] = u"Workbook", other[] = u"Other";

/// The book's sectors follow those of the other stream. A small book is in the mini stream.
TFile MakeFile(bool isSmall) {
    SXlsParts parts;
    for (unsigned row = 0; row < (isSmall ? 10U : 700U); ++row)
        parts.sheets[0].strCells += Number(row, 0, row);
    return CCompoundBuilder().Add(other, Noise(isSmall ? 300 : 80'000)).Add(book, parts.Stream()).Finish();
}

std::uint32_t Start(const TFile& file, const char16_t* path = book) {
    return file.GetEntry(path, TFile::start);
}

/// The FAT entry of a sector of the book.
void SetNext(TFile& file, std::uint32_t sector, std::uint32_t next) {
    file.Set(file.TableOffset(Start(file) + sector), next);
}

/// The mini FAT entry of a sector of the book.
void SetNextSmall(TFile& file, std::uint32_t sector, std::uint32_t next) {
    file.Set((file.Get(60) + 1) * file.sectorSize + (Start(file) + sector) * 4, next);
}

const SSpoiled<TFile> forged[] = {
    {"a truncated header", [](TFile& f) { f.bytes.resize(511); }, "not a compound file"},
    {"nothing but a header", [](TFile& f) { f.bytes.resize(512); }, "larger than the whole file"},
    {"another byte order", [](TFile& f) { f.bytes[28] = 1; }, "header"},
    {"sectors of 2^40 bytes", [](TFile& f) { f.bytes[30] = 40; }, "header"},
    {"mini sectors of another size", [](TFile& f) { f.bytes[32] = 7; }, "header"},
    {"a FAT that lists itself twice", [](TFile& f) { f.Set(44, 2), f.Set(80, f.Get(76)); }, "used twice"},
    {"a FAT behind the file", [](TFile& f) { f.Set(76, 0x7FFFFFFF); }, "beyond the end"},
    {"a FAT whose list is in itself",
     [](TFile& f) {
         for (std::uint32_t i = 1; i < 109; ++i)
             f.Set(76 + 4 * i, i);
         f.Set(44, 120), f.Set(68, f.Get(76));
     },
     "used twice"},
    {"a cyclic directory", [](TFile& f) { f.Set(f.TableOffset(f.Get(48)), f.Get(48)); }, "directory: sector"},
    {"no root", [](TFile& f) { f.bytes[f.entries[u""] + TFile::type] = 1; }, "no root"},
    {"no stream of that name", [](TFile& f) { f.bytes[f.entries[book]] = 'x'; }, "does not contain one"},
    {"a storage of that name", [](TFile& f) { f.bytes[f.entries[book] + TFile::type] = 1; }, "does not contain one"},
    {"a child beyond the directory", [](TFile& f) { f.SetEntry(u"", TFile::child, 99); }, "directory is damaged"},
    {"entries in a cycle", [](TFile& f) { f.SetEntry(other, TFile::right, 1); }, "directory is damaged"},
    {"a size beyond the chain", [](TFile& f) { f.SetEntry(book, TFile::size, 20'000); }, "ends too early"},
    {"a size that truncates a record", [](TFile& f) { f.SetEntry(book, TFile::size, 5'000); }, "within the record"},
    {"a chain into nothing", [](TFile& f) { SetNext(f, 0, 0xFFFFFFFF); }, "an invalid sector"},
    {"a sector that is its own next", [](TFile& f) { SetNext(f, 3, Start(f) + 3); }, "used twice"},
    {"a chain into the directory", [](TFile& f) { SetNext(f, 0, f.Get(48)); }, "used twice"},
    {"a chain into the FAT", [](TFile& f) { SetNext(f, 0, f.Get(76)); }, "used twice"},
    {"a chain that crosses another one", [](TFile& f) { SetNext(f, 2, Start(f, other)); }, "within the record"},
};

const SSpoiled<TFile> forgedSmall[] = {
    {"a cyclic mini stream", [](TFile& f) { f.Set(f.TableOffset(Start(f, u"")), Start(f, u"")); },
     "the mini stream: sector"},
    {"a cyclic mini FAT", [](TFile& f) { f.Set(f.TableOffset(f.Get(60)), f.Get(60)); }, "the mini FAT: sector"},
    {"no mini FAT", [](TFile& f) { f.Set(60, 0xFFFFFFFE); }, "table ends before"},
    {"a cyclic chain of mini sectors", [](TFile& f) { SetNextSmall(f, 1, Start(f)); }, "used twice"},
    {"a chain of mini sectors that ends too early", [](TFile& f) { SetNextSmall(f, 0, 0xFFFFFFFE); },
     "ends too early"},
    {"a chain of mini sectors that crosses another one", [](TFile& f) { SetNextSmall(f, 0, Start(f, other)); },
     "within the record"},
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

std::vector<SHostileCase> CompoundCases() {
    const auto make = [](bool isSmall) {
        return [=](const auto& spoil) {
            TFile file = MakeFile(isSmall);
            spoil(file);
            return file.bytes;
        };
    };
    const std::string whole = MakeFile(false).bytes;
    std::vector<SHostileCase> cases{{"a valid one", [=] { return whole; }, "700 rows"},
                                    {"a small one", [] { return MakeFile(true).bytes; }, "10 rows"}};
    AddSpoiled(cases, forged, make(false));
    AddSpoiled(cases, forgedSmall, make(true));
    // What is missing of the FAT, which is last, may concern sectors that nothing uses.
    AddTruncated(cases, whole, 513, 997, whole.size() - 512);
    return cases;
}

} // namespace NSTQ::Tests
