// Databases made to do harm, or damaged. A damaged table does not keep others from being read.
#include "hostile/Hostile.h"

#include "support/AccessWriter.h"

namespace NSTQ::Tests {
namespace {

using enum EAccess;

constexpr std::uint32_t farPage = 0x00FFFFFF;
constexpr std::size_t boolColumns = 120;

void AddGood(CAccessWriter& writer) {
    CAccessTable& good = writer.AddTable("Good", {{"a"}});
    for (int i = 0; i < 500; ++i)
        good.Add({"good"});
}

/// A database with a table "Bad", whose definition and long values take several pages and some of whose rows have
/// moved, a table "Good", and functions that damage the first.
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
        AddGood(writer);
        pages = &writer.Finish();
        definition = bad.DefinitionPage(), rows = bad.RowPages()[0];
        longs = bad.LongPages(), catalogue = writer.Catalogue().RowPages()[0], map = bad.MapPlace();
    }

    std::size_t SlotAt(std::size_t row) const { return writer.Maps().SlotsAt() + 2 * row; }
    std::size_t RowAt(std::uint32_t page, std::size_t row) const { return pages->Get(page, SlotAt(row), 2) & 0x1FFF; }
    std::uint64_t Rows(std::uint32_t page) const { return pages->Get(page, SlotAt(0) - 2, 2); }
    std::uint64_t Most() const { return pages->IsJet3() ? 0xFF : 0xFFFF; }
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
    void Put(std::size_t row, std::uint64_t value, std::size_t width) {
        pages->Put(rows, RowAt(rows, row), value, width);
    }
    /// The entry before the end of the first row: 0 is the count of values of variable size, the others tell where
    /// these begin, and the last where they end.
    void Entry(std::size_t entry, std::uint64_t value) {
        const std::size_t nulls = (3 + boolColumns + 7) / 8;
        pages->Put(rows, pages->Size() - nulls - (entry + 1) * Width(), value, Width());
    }
    /// Where the tenth row has moved to.
    void Move(std::uint32_t page, std::uint32_t row) { Put(9, page << 8 | row, 4); }
    /// Where the third piece of the long values continues.
    void GoOn(std::uint32_t page) { pages->Put(longs[2], RowAt(longs[2], 0), SRecordPlace{page, 0}.Pointer()); }

    CAccessWriter writer;
    CAccessPages* pages;
    std::uint32_t definition, rows, catalogue;
    std::vector<std::uint32_t> longs;
    SRecordPlace map;
};

const SSpoiled<V> spoiled[] = {
    {"a definition that continues in itself", [](V& v) { v.Define(4, 4, v.definition); }, "too long"},
    {"a definition that continues behind the file", [](V& v) { v.Define(4, 4, farPage); }, "no page"},
    {"a definition that continues in rows", [](V& v) { v.Define(4, 4, v.rows); }, "type 1"},
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
    {"a usage map with all pages", [](V& v) { v.Map(5, std::string(v.pages->Count() / 8 - 3, '\xFF')); }, "30 rows"},
    {"a usage map with pages behind the file", [](V& v) { v.Map(1, "\xF0\xFF\xFF\xFF"); }, "does not exist"},
    {"a usage map on a page behind the file", [](V& v) { v.Map(0, "\1\xFF\xFF\xFF"); }, "no page"},
    {"a usage map on its own page", [](V& v) { v.Map(0, "\1" + LittleEndian(v.map.page, 4)); }, "type 1"},
    {"65535 rows on a page", [](V& v) { v.Slot(-1, 0xFFFF); }, "states 65535 rows"},
    {"a row behind its page", [](V& v) { v.Slot(0, 0x1FFF); }, "does not lie inside"},
    {"a row in its page's header", [](V& v) { v.Slot(1, 1); }, "does not lie inside"},
    {"a row behind the one before", [](V& v) { v.Slot(1, v.pages->Size() - 1); }, "does not lie inside"},
    {"a deleted row behind its page", [](V& v) { v.Slot(static_cast<int>(v.Rows(v.rows)) - 1, 0x9FFF); }, "29 rows"},
    {"a page of rows of another table", [](V& v) { v.pages->Put(v.rows, 4, 2, 4); }, "should contain rows"},
    {"a page of rows of another kind", [](V& v) { v.pages->Put(v.rows, 0, 9, 1); }, "rows are lost"},
    {"a row of 0 bytes", [](V& v) { v.Slot(0, v.pages->Size()); }, "shorter"},
    {"a row of too many columns", [](V& v) { v.Put(0, 250, v.Width()); }, "has 250 columns"},
    {"too many values of variable size", [](V& v) { v.Entry(0, 200); }, "shorter"},
    {"a value that begins behind its row", [](V& v) { v.Entry(1, 0xFFF0 & v.Most()); }, "inside its row"},
    {"a value that begins before the one before", [](V& v) { v.Entry(2, 0); }, "inside its row"},
    {"a row without room for its null mask",
     [](V& v) {
         const std::size_t at = v.pages->Size() - 3 - v.Width();
         v.Slot(0, at), v.pages->Put(v.rows, at, boolColumns, v.Width());
     },
     "shorter"},
    {"a moved row without a pointer", [](V& v) { v.Slot(9, 0x4000 | v.RowAt(v.rows, 8)); }, "invalid pointer"},
    {"a row moved to itself", [](V& v) { v.Move(v.rows, 9); }, "form a cycle"},
    {"a row moved behind the file", [](V& v) { v.Move(farPage, 0); }, "no page 16777215"},
    {"a row moved to no slot", [](V& v) { v.Move(v.rows, 200); }, "no row 200"},
    {"a row moved into the catalogue", [](V& v) { v.Move(v.catalogue, 0); }, "belong to the table"},
    {"a row moved into long values", [](V& v) { v.Move(v.longs[0], 0); }, "does not belong to the table"},
    {"two rows moved to one place", [](V& v) { v.Put(19, v.pages->Get(v.rows, v.RowAt(v.rows, 9), 4), 4); },
     "two rows"},
    {"long values that continue in themselves",
     [](V& v) {
         for (const std::uint32_t page : v.longs)
             for (std::uint32_t row = 0; row < v.Rows(page); ++row)
                 v.pages->Put(page, v.RowAt(page, row), SRecordPlace{page, row}.Pointer());
     },
     "cyclic chain"},
    {"a long value that continues behind the file", [](V& v) { v.GoOn(farPage); }, "no page"},
    {"a long value that continues in a definition", [](V& v) { v.GoOn(2); }, "type 2"},
    {"a long value that ends too early", [](V& v) { v.GoOn(0); }, "too early"},
};

/// A table "Bad" of numbers, texts, long texts and moved rows, queries on it with conditions, and other objects.
std::string MakeLarge(EJet version, std::int64_t rows, int queries, std::size_t conditions = 0, int objects = 0) {
    CAccessWriter writer(version);
    CAccessTable& bad = writer.AddTable("Bad", {{"Id", Long}, {"Text"}, {"Note", Memo}});
    for (std::int64_t i = 0; i < rows; ++i)
        bad.Add({i, "some text", std::string(i % 8 == 0 ? 500 : 5, 'n')},
                {i % 5 == 0 ? ERowPlace::Moved : ERowPlace::Plain});
    AddGood(writer);
    std::vector<SAccessQueryRow> query = {{0}, {1, 1}, {5, {}, "", "Bad"}, {6, 0, "Id"}, {255}};
    query.insert(query.end() - 1, conditions, {8, {}, "Id>1"});
    for (int i = 0; i < queries; ++i)
        writer.AddQuery("Query" + std::to_string(i), query);
    for (int i = 0; i < objects; ++i)
        writer.AddObject("Form" + std::to_string(i), 6, 0);
    return writer.Finish().Bytes();
}

const SSpoiled<std::string> files[] = {
    {"nothing", [](std::string& file) { file.clear(); }, ""},
    {"a text", [](std::string& file) { file = "a,b\r\n"; }, ""},
    {"zeros", [](std::string& file) { file.assign(9000, '\0'); }, ""},
    {"a compound file", [](std::string& file) { file.replace(0, 8, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"); }, ""},
    {"a truncated header", [](std::string& file) { file.resize(20); }, ""},
    {"no catalogue", [](std::string& file) { file[2 * 4096] = '\1'; }, "type 1"},
    {"a catalogue without a column", [](std::string& file) { file.replace(file.find(Utf16Bytes("LvProp")), 1, "X"); },
     "no column LvProp"},
    {"a later version", [](std::string& file) { file[0x14] = '\x30'; }, ""},
    {"8000 queries", [](std::string& file) { file = MakeLarge(EJet::Jet4, 1, 8000); }, "1 rows"},
    {"30000 conditions", [](std::string& file) { file = MakeLarge(EJet::Jet4, 1, 1, 30'000); }, "1 rows"},
    {"30000 objects", [](std::string& file) { file = MakeLarge(EJet::Jet4, 1, 1, 0, 30'000); }, "1 rows"},
    {"many rows of Jet 3", [](std::string& file) { file = MakeLarge(EJet::Jet3, 200'000, 0); }, "200000 rows"},
    {"many rows of Jet 4", [](std::string& file) { file = MakeLarge(EJet::Jet4, 200'000, 0); }, "200000 rows"},
};

} // namespace

std::vector<SHostileCase> AccessCases() {
    std::vector<SHostileCase> cases;
    const std::string good = V(EJet::Jet4).pages->Bytes();
    for (const EJet version : {EJet::Jet4, EJet::Jet3}) {
        const std::string suffix = ", version " + std::to_string(static_cast<int>(version));
        cases.push_back({"a valid one" + suffix, [=] { return V(version).pages->Bytes(); }, "30 rows"});
        const auto make = [=](const auto& spoil) {
            V victim(version);
            spoil(victim);
            return victim.pages->Bytes();
        };
        AddSpoiled(cases, spoiled, make, suffix);
        const std::string whole = V(version).pages->Bytes();
        AddTruncated(cases, whole, 0, whole.size() / 40, whole.size(), suffix);
    }
    AddSpoiled(cases, files, [=](const auto& spoil) {
        std::string file = good;
        spoil(file);
        return file;
    });
    return cases;
}

/// The outcome of the damaged table, if all the rows of the other one can be read.
std::string RunAccess(const std::string& path) {
    const std::string other = RunSecondTable(path);
    return other == "500 rows" ? RunSource(path) : other;
}

} // namespace NSTQ::Tests
