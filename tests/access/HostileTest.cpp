// Databases made to do harm, or broken: each ends soon, with what is wrong told, and a table that is damaged keeps no
// other from being read.
#include "access/AccessHarness.h"
#include "support/AnsiPage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

namespace NSTQ::Tests {
namespace {

using enum EAccess;
using Clock = std::chrono::steady_clock;

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
        CAccessTable& good = writer.AddTable("Good", {{"a"}});
        for (int i = 0; i < 500; ++i)
            good.Add({"good"});
        writer.AddQuery("Query", {{0}, {1, 1}, {5, {}, "", "Bad"}, {6, 0, "Id"}, {8, {}, "Id>1"}, {255}});
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

struct SHostileCase {
    const char* title;
    void (*spoil)(V&);
    const char* word; ///< of what comes out; null where all rows are read all the same
};

const SHostileCase hostileCases[] = {
    {"a definition that goes on in itself", [](V& v) { v.Define(4, 4, v.definition); }, "refused"},
    {"a definition that goes round", [](V& v) { v.pages->Put(v.next, 4, v.definition, 4); }, "refused"},
    {"a definition that goes on behind the file", [](V& v) { v.Define(4, 4, farPage); }, "refused"},
    {"a definition that goes on in rows", [](V& v) { v.Define(4, 4, v.rows); }, "refused"},
    {"a definition that ends too early", [](V& v) { v.Define(4, 4, 0); }, "refused"},
    {"no definition", [](V& v) { v.Define(0, 0, 1, 1); }, "refused"},
    {"a definition of 4 GB", [](V& v) { v.Define(8, 8, ~0U); }, nullptr},
    {"4 billion rows claimed", [](V& v) { v.Define(12, 16, ~0U); }, nullptr},
    {"65535 columns", [](V& v) { v.Define(25, 45, 0xFFFF, 2); }, "refused"},
    {"no columns", [](V& v) { v.Define(25, 45, 0, 2); }, ""},
    {"4 billion indexes", [](V& v) { v.Define(31, 51, ~0U); }, "refused"},
    {"so many indexes that their size overflows", [](V& v) { v.Define(31, 51, 0x15555556); }, "refused"},
    {"a column far right in the row", [](V& v) { v.Define(43 + 8 + 14, 63 + 12 + 21, 0xFFFE, 2); }, "shorter"},
    {"a column far behind in the row", [](V& v) { v.Define(51 + 18 + 3, 75 + 25 + 7, 0xFFFE, 2); }, ""},
    {"a usage map behind the file", [](V& v) { v.Define(35, 55, farPage << 8); }, "refused"},
    {"a usage map that is no record", [](V& v) { v.Define(35, 55, v.map.page << 8 | 0xFF); }, "refused"},
    {"a usage map in a definition", [](V& v) { v.Define(35, 55, 2 << 8); }, "refused"},
    {"a usage map of an unknown kind", [](V& v) { v.Map(0, "\7"); }, "refused"},
    {"a usage map with all pages",
     [](V& v) { v.Map(0, std::string(5, '\0') + std::string(v.pages->Count() / 8, '\xFF')); }, nullptr},
    {"a usage map with pages behind the file", [](V& v) { v.Map(1, "\xF0\xFF\xFF\xFF"); }, "refused"},
    {"a usage map on a page behind the file", [](V& v) { v.Map(0, "\1\xFF\xFF\xFF"); }, "refused"},
    {"a usage map on its own page", [](V& v) { v.Map(0, "\1" + LittleEndian(v.map.page, 4)); }, "refused"},
    {"65535 rows on a page", [](V& v) { v.Slot(-1, 0xFFFF); }, "refused"},
    {"a row behind its page", [](V& v) { v.Slot(0, 0x1FFF); }, "refused"},
    {"a row in its page's header", [](V& v) { v.Slot(1, 1); }, "does not lie inside"},
    {"a row behind the one before", [](V& v) { v.Slot(1, v.pages->Size() - 1); }, "does not lie inside"},
    {"a row of no bytes", [](V& v) { v.Slot(0, v.pages->Size()); }, "refused"},
    {"a row of one byte", [](V& v) { v.Slot(0, v.pages->Size() - 1); }, ""},
    {"a row of too many columns", [](V& v) { v.pages->Put(v.rows, v.RowAt(v.rows, 0), 250, v.Width()); }, "refused"},
    {"too many values of variable size", [](V& v) { v.Entry(0, 200); }, "shorter"},
    {"a value that begins behind its row", [](V& v) { v.Entry(1, v.pages->IsJet3() ? 0xF0 : 0xFFF0); },
     "inside its row"},
    {"a value that begins before the one before", [](V& v) { v.Entry(2, 0); }, "inside its row"},
    {"a row moved to itself", [](V& v) { v.Move(v.rows, 9); }, "circles"},
    {"a row moved behind the file", [](V& v) { v.Move(farPage, 0); }, "no page 16777215"},
    {"a row moved to no slot", [](V& v) { v.Move(v.rows, 200); }, "no row 200"},
    {"a row moved into the catalogue", [](V& v) { v.Move(v.writer.Catalogue().RowPages()[0], 0); },
     "not the table's"},
    {"a row moved into long values", [](V& v) { v.Move(v.longs[0], 0); }, "not the table's"},
    {"long values that go on in themselves", [](V& v) { v.GoRound(); }, "circles"},
    {"a long value that goes on behind the file", [](V& v) { v.GoOn(farPage); }, "no page"},
    {"a long value that goes on in a definition", [](V& v) { v.GoOn(2); }, "type 2"},
    {"a long value that ends too early", [](V& v) { v.GoOn(0); }, "too early"},
};

TEST(AccessHostile, EndsSoonAndSaysWhatIsWrong) {
    const CAnsiPage page(1252);
    for (const EJet version : {EJet::Jet3, EJet::Jet4}) {
        const std::string whole = CAccessFile(V(version).pages->Bytes()).Rows("Bad");
        EXPECT_EQ(std::ranges::count(whole, '\n'), 30);
        for (const SHostileCase& hostile : hostileCases) {
            V victim(version);
            hostile.spoil(victim);
            const auto begin = Clock::now();
            CAccessFile file(victim.pages->Bytes());
            const std::string bad = file.Rows("Bad");
            EXPECT_EQ(file.Rows("Good").size(), 2500U) << hostile.title;
            EXPECT_LT(Clock::now() - begin, std::chrono::seconds(2)) << hostile.title;
            EXPECT_TRUE(hostile.word != nullptr ? bad.find(hostile.word) != std::string::npos : bad == whole)
                << hostile.title << ", version " << int(version) << ": ... "
                << bad.substr(std::max<std::size_t>(bad.size(), 100) - 100);
        }
    }
}

/// A file cut anywhere gives what is left of a table, and then an error.
TEST(AccessHostile, NoCutOfAFileLeadsAstray) {
    const CAnsiPage page(1252);
    for (const EJet version : {EJet::Jet3, EJet::Jet4}) {
        V victim(version);
        const std::string bytes = victim.pages->Bytes();
        const std::string whole = CAccessFile(bytes).Rows("Bad");
        for (std::size_t size = 0; size < bytes.size(); size += victim.pages->Size() / 2) {
            const std::string rest = CAccessFile(bytes.substr(0, size)).Rows("Bad");
            const std::size_t end = rest.rfind('\n') + 1;
            EXPECT_EQ(rest.substr(0, end), whole.substr(0, end)) << size;
            EXPECT_TRUE(rest == whole || rest.size() > end) << size;
        }
    }
}

TEST(AccessHostile, OtherFilesAreRefused) {
    CAccessWriter writer(EJet::Jet4);
    std::string noCatalogue = writer.Finish().Bytes(), ofTomorrow = noCatalogue;
    noCatalogue[2 * 4096] = '\1';
    ofTomorrow[0x14] = '\x30';
    for (const std::string& bytes : {std::string(), std::string("a,b\r\n"), std::string(9000, '\0'),
                                     "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1" + std::string(9000, '\0'),
                                     std::string("\0\1\0\0Standard Jet DB\0", 20), noCatalogue, ofTomorrow})
        EXPECT_EQ(CAccessFile(bytes).Prepare(), NSTQCore::CSourceDataInfo::SDO_ACCESS_DENIED) << bytes.size();
}

} // namespace
} // namespace NSTQ::Tests
