// Databases made to do harm, or broken. A table that is damaged keeps no other from being read.
#include "hostile/Hostile.h"

#include "support/AccessWriter.h"

#include <tuple>

namespace NSTQ::Tests {
namespace {

using enum EAccess;

constexpr std::uint32_t farPage = 0x00FFFFFF;
constexpr std::size_t boolColumns = 120;

/// A database with a table "Bad" whose definition and long values take several pages and some of whose rows have
/// moved, a table "Good", and ways to damage the first.
struct V {
    explicit V(EJet version) : writer(version) {
        std::vector<SAccessColumn> columns = {{"Id", Long}, {"Text"}, {"Note", Memo}};
        for (std::size_t i = 0; i < boolColumns; ++i)
            columns.push_back({"a column that takes some room " + std::to_string(i), Boolean});
        CAccessTable& bad = writer.AddTable("Bad", columns);
        for (std::int64_t i = 0; i < 30; ++i) {
            AccessRow row = {i, std::string(40, 't'), std::string(9000, 'n')};
            row.resize(columns.size());
            bad.Add(row, {i % 10 == 9 ? ERowPlace::Moved : ERowPlace::Plain});
        }
        writer.AddQuery("Query", {{0}, {1, 1}, {5, {}, "", "Bad"}, {6, 0, "Id"}, {8, {}, "Id>1"}, {255}});
        CAccessTable& good = writer.AddTable("Good", {{"a"}});
        for (int i = 0; i < 500; ++i)
            good.Add({"good"});
        pages = &writer.Finish();
        definition = bad.DefinitionPage(), next = bad.DefinitionPage(1), rows = bad.RowPages()[0];
        longs = bad.LongPages(), map = bad.MapPlace();
    }

    std::size_t SlotAt(std::size_t row) const { return writer.Maps().SlotsAt() + 2 * row; }
    std::size_t RowAt(std::uint32_t page, std::size_t row) const { return pages->Get(page, SlotAt(row), 2) & 0x1FFF; }
    std::size_t Width() const { return pages->IsJet3() ? 1 : 2; }

    /// At two offsets, for Jet 3 and Jet 4, in the definition.
    void Define(std::size_t jet3At, std::size_t jet4At, std::uint64_t value, std::size_t width = 4) {
        pages->Put(definition, pages->IsJet3() ? jet3At : jet4At, value, width);
    }
    void Map(std::size_t offset, const std::string& bytes) {
        pages->Put(map.page, RowAt(map.page, map.row) + offset, bytes);
    }
    void Slot(int row, std::uint64_t value) {
        pages->Put(rows, SlotAt(0) + static_cast<std::size_t>(2 * row), value, 2);
    }
    /// The entry before the end of the first row: 0 is the count of values of variable size, the others tell where
    /// these begin, and the last where they end.
    void Entry(std::size_t entry, std::uint64_t value) {
        const std::size_t nulls = (3 + boolColumns + 7) / 8;
        pages->Put(rows, pages->Size() - nulls - (entry + 1) * Width(), value, Width());
    }
    /// Leaves the last bytes of the first row as a row of 120 columns.
    void Shorten(std::size_t size) {
        Slot(0, pages->Size() - size);
        pages->Put(rows, pages->Size() - size, boolColumns, Width());
    }
    int LastRow() const { return static_cast<int>(pages->Get(rows, SlotAt(0) - 2, 2)) - 1; }
    /// Where the tenth row has moved to.
    void Move(std::uint32_t page, std::uint32_t row) {
        pages->Put(rows, RowAt(rows, 9), SRecordPlace{page, row}.Pointer());
    }
    /// Where the third piece of long values goes on.
    void GoOn(std::uint32_t page) { pages->Put(longs[2], RowAt(longs[2], 0), SRecordPlace{page, 0}.Pointer()); }
    void GoRound() {
        for (const std::uint32_t page : longs)
            for (std::uint32_t row = 0; row < pages->Get(page, SlotAt(0) - 2, 2); ++row)
                pages->Put(page, RowAt(page, row), SRecordPlace{page, row}.Pointer());
    }

    CAccessWriter writer;
    CAccessPages* pages;
    std::uint32_t definition, next, rows;
    std::vector<std::uint32_t> longs;
    SRecordPlace map;
};

const struct {
    const char* title;
    void (*spoil)(V&);
    const char* outcome; ///< a number of rows, or the cause of a refusal
} spoiled[] = {
    {"a definition that goes on in itself", [](V& v) { v.Define(4, 4, v.definition); }, "too long"},
    {"a definition that goes on behind the file", [](V& v) { v.Define(4, 4, farPage); }, "no page"},
    {"a definition that goes on in rows", [](V& v) { v.Define(4, 4, v.rows); }, "type 1"},
    {"a definition that ends too early", [](V& v) { v.Define(4, 4, 0); }, "ends inside"},
    {"no definition", [](V& v) { v.Define(0, 0, 1, 1); }, "type 1"},
    {"a definition of 4 GB", [](V& v) { v.Define(8, 8, ~0U); }, "30 rows"},
    {"4 billion rows claimed", [](V& v) { v.Define(12, 16, ~0U); }, "30 rows"},
    {"65535 columns", [](V& v) { v.Define(25, 45, 0xFFFF, 2); }, "ends inside"},
    {"so many indexes that their size overflows", [](V& v) { v.Define(31, 51, 0x15555556); }, "ends inside"},
    {"a column far right in the row", [](V& v) { v.Define(43 + 8 + 14, 63 + 12 + 21, 0xFFFE, 2); }, "shorter"},
    {"a usage map behind the file", [](V& v) { v.Define(35, 55, farPage << 8); }, "no page"},
    {"a usage map in a definition", [](V& v) { v.Define(35, 55, 2 << 8); }, "type 2"},
    {"a usage map of an unknown kind", [](V& v) { v.Map(0, "\7"); }, "unknown type"},
    {"a usage map with all pages",
     [](V& v) { v.Map(0, std::string(5, '\0') + std::string(v.pages->Count() / 8, '\xFF')); }, "30 rows"},
    {"a usage map with pages behind the file", [](V& v) { v.Map(1, "\xF0\xFF\xFF\xFF"); },
     "does not exist in the file"},
    {"a usage map on a page behind the file", [](V& v) { v.Map(0, "\1\xFF\xFF\xFF"); }, "no page"},
    {"a usage map on its own page", [](V& v) { v.Map(0, "\1" + LittleEndian(v.map.page, 4)); }, "type 1"},
    {"65535 rows on a page", [](V& v) { v.Slot(-1, 0xFFFF); }, "states 65535 rows"},
    {"a row behind its page", [](V& v) { v.Slot(0, 0x1FFF); }, "does not lie inside"},
    {"a row in its page's header", [](V& v) { v.Slot(1, 1); }, "does not lie inside"},
    {"a row behind the one before", [](V& v) { v.Slot(1, v.pages->Size() - 1); }, "does not lie inside"},
    {"a deleted row behind its page", [](V& v) { v.Slot(v.LastRow(), 0x9FFF); }, "29 rows"},
    {"a page of rows that is another table's", [](V& v) { v.pages->Put(v.rows, 4, 2, 4); }, "should contain rows"},
    {"a page of rows of another kind", [](V& v) { v.pages->Put(v.rows, 0, 9, 1); }, "rows are lost"},
    {"a row of no bytes", [](V& v) { v.Slot(0, v.pages->Size()); }, "shorter"},
    {"a row of too many columns", [](V& v) { v.pages->Put(v.rows, v.RowAt(v.rows, 0), 250, v.Width()); },
     "has 250 columns"},
    {"too many values of variable size", [](V& v) { v.Entry(0, 200); }, "shorter"},
    {"a value that begins behind its row", [](V& v) { v.Entry(1, v.pages->IsJet3() ? 0xF0 : 0xFFF0); },
     "inside its row"},
    {"a value that begins before the one before", [](V& v) { v.Entry(2, 0); }, "inside its row"},
    {"a row with no room for its null mask", [](V& v) { v.Shorten(3 + v.Width()); }, "shorter"},
    {"a row that has moved nowhere", [](V& v) { v.Slot(9, 0x4000 | v.RowAt(v.rows, 8)); }, "invalid pointer"},
    {"a row moved to itself", [](V& v) { v.Move(v.rows, 9); }, "form a cycle"},
    {"a row moved behind the file", [](V& v) { v.Move(farPage, 0); }, "no page 16777215"},
    {"a row moved to no slot", [](V& v) { v.Move(v.rows, 200); }, "no row 200"},
    {"a row moved into the catalogue", [](V& v) { v.Move(v.writer.Catalogue().RowPages()[0], 0); },
     "does not belong to the table"},
    {"a row moved into long values", [](V& v) { v.Move(v.longs[0], 0); }, "does not belong to the table"},
    {"two rows moved to one place",
     [](V& v) { v.pages->Put(v.rows, v.RowAt(v.rows, 19), v.pages->Get(v.rows, v.RowAt(v.rows, 9), 4), 4); },
     "two rows were moved"},
    {"long values that go on in themselves", [](V& v) { v.GoRound(); }, "cyclic chain"},
    {"a long value that goes on behind the file", [](V& v) { v.GoOn(farPage); }, "no page"},
    {"a long value that goes on in a definition", [](V& v) { v.GoOn(2); }, "type 2"},
    {"a long value that ends too early", [](V& v) { v.GoOn(0); }, "too early"},
};

std::string MakeQueries(int count) {
    CAccessWriter writer(EJet::Jet4);
    writer.AddTable("Bad", {{"Id", Long}, {"Text"}}).Add({std::int64_t{1}, "t"});
    writer.AddTable("Good", {{"a"}}).Add({"good"});
    for (int i = 0; i < count; ++i)
        writer.AddQuery("Query" + std::to_string(i), {{0}, {1, 1}, {5, {}, "", "Bad"}, {6, 0, "Id"}, {255}});
    return writer.Finish().Bytes();
}

void AddCases(std::vector<SHostileCase>& cases, EJet version) {
    const std::string suffix = ", version " + std::to_string(static_cast<int>(version));
    cases.push_back({"a good one" + suffix, [=] { return V(version).pages->Bytes(); }, "30 rows"});
    for (const auto& known : spoiled) {
        const std::string outcome = known.outcome;
        const bool isRead = outcome[0] >= '0' && outcome[0] <= '9';
        cases.push_back({known.title + suffix,
                         [=, &known] {
                             V victim(version);
                             known.spoil(victim);
                             return victim.pages->Bytes();
                         },
                         isRead ? outcome : "refused: ", isRead ? "" : outcome});
    }
    const std::string whole = V(version).pages->Bytes();
    for (std::size_t size = 0; size < whole.size(); size += whole.size() / 40)
        cases.push_back(
            {"cut to " + std::to_string(size) + suffix, [=] { return whole.substr(0, size); }, "", "refused: "});
}

} // namespace

std::vector<SHostileCase> AccessCases() {
    std::vector<SHostileCase> cases;
    for (const EJet version : {EJet::Jet4, EJet::Jet3})
        AddCases(cases, version);
    cases.push_back({"8000 queries", [] { return MakeQueries(8000); }, "the other table: 1 rows"});
    std::string noCatalogue = V(EJet::Jet4).pages->Bytes(), ofTomorrow = noCatalogue, noColumn = noCatalogue;
    noCatalogue[2 * 4096] = '\1';
    ofTomorrow[0x14] = '\x30';
    noColumn.replace(noColumn.find(Utf16Bytes("LvProp")), 1, "X");
    const std::tuple<const char*, std::string, const char*> files[] = {
        {"nothing", "", ""},
        {"a text", "a,b\r\n", ""},
        {"zeros", std::string(9000, '\0'), ""},
        {"a compound file", "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1" + std::string(9000, '\0'), ""},
        {"a header cut off", std::string("\0\1\0\0Standard Jet DB\0", 20), ""},
        {"no catalogue", noCatalogue, "type 1"},
        {"a catalogue without a column", noColumn, "no column LvProp"},
        {"a version to come", ofTomorrow, ""},
    };
    for (const auto& [title, bytes, word] : files)
        cases.push_back({title, [bytes = bytes] { return bytes; }, "the other table: refused: ", word});
    return cases;
}

/// What comes of the other table, where that is not all its rows, or of the damaged one.
std::string RunAccess(const std::string& path) {
    const std::string other = RunSource(path, 1);
    return other == "500 rows" ? RunSource(path) : "the other table: " + other;
}

} // namespace NSTQ::Tests
