// The layouts of rows, columns and long values in the pages: each gives the same rows.
#include "access/AccessHarness.h"

namespace NSTQ::Tests {
namespace {

using enum EAccess;
using enum ERowPlace;
using enum SAccessTableOptions::ELongValue;

constexpr EJet someVersions[] = {EJet::Jet3, EJet::Jet4, EJet::Ace17};
const std::vector<SAccessColumn> threeColumns = {{"Id", Long}, {"Text", Text}, {"Note", Memo}};
const AccessValue two = std::int64_t{2};

std::string Letters(std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += static_cast<char>('a' + (i + count) % 26);
    return text;
}

/// Numbered rows with a text and a note, whose sizes alternate.
struct SRunCase {
    const char* title;
    int rows;
    std::vector<std::size_t> texts;
    std::vector<std::size_t> notes;
    SAccessTableOptions options = {};
    ERowPlace place = Plain; ///< of every `turn`-th row
    int turn = 1;
    std::uint32_t firstPage = 0; ///< where the second row lies; only for Jet 3, whose pages are small
};

const SRunCase runCases[] = {
    {"no rows", 0, {}, {}},
    {"rows on many pages", 1000, {0, 1, 50, 99, 200}, {1}},
    {"deleted rows", 100, {80}, {1}, {}, Deleted, 3},
    {"only deleted rows", 2, {1}, {1}, {}, Deleted},
    {"rows that have moved", 60, {90}, {120}, {}, Moved, 2},
    {"only rows that have moved", 60, {90}, {120}, {}, Moved},
    {"long values by their size", 7, {1}, {0, 1, 63, 64, 65, 100, 1500}},
    {"long values in the rows", 7, {1}, {0, 1, 63, 64, 65, 100, 1500}, {.longValue = InRow}},
    {"long values in records of their own", 7, {1}, {0, 1, 63, 64, 65, 100, 1500}, {.longValue = OnePage}},
    {"small pieces", 7, {1}, {0, 1, 63, 64, 65, 100, 1500}, {.longValue = Chain, .chainPiece = 7}},
    {"pieces as large as pages", 9, {1}, {2030, 2032, 2034, 4068, 4076, 4080, 8152, 8153, 30000}},
    {"a usage map on pages of its own", 300, {90}, {1}, {.hasMapPages = true}, Moved, 50},
    {"no indexes", 10, {1}, {1}, {.hasIndex = false}},
    {"rows behind the first page of the usage map", 80, {200}, {1}, {}, Plain, 1, 16345},
};

TEST(AccessLayout, RowsAndLongValues) {
    for (const SRunCase& run : runCases)
        for (const EJet version : someVersions) {
            if (run.firstPage > 0 && version != EJet::Jet3)
                continue;
            CAccessWriter writer(version);
            CAccessTable& table = writer.AddTable("T", threeColumns, run.options);
            std::string expected;
            for (int i = 0; i < run.rows; ++i) {
                const auto turn = static_cast<std::size_t>(i);
                const std::string text = Letters(run.texts[turn % run.texts.size()]);
                const std::string note = Letters(run.notes[turn % run.notes.size()]);
                const ERowPlace place = i % run.turn == 0 ? run.place : Plain;
                table.Add({std::int64_t{i}, text, note}, {place});
                if (place != Deleted)
                    expected += std::to_string(i) + "|" + text + "|" + note + "\n";
                if (i == 0 && run.firstPage > 0)
                    writer.Pages().Bytes().resize(run.firstPage * writer.Pages().Size());
            }
            EXPECT_EQ(RowsOf(writer), expected) << run.title << ", version " << int(version);
        }
}

struct SColumnsCase {
    const char* title;
    std::vector<SAccessColumn> columns;
    std::vector<std::pair<AccessRow, ERowPlace>> rows; ///< may lack the last columns, as old rows do
    const char* expected;
};

SAccessColumn Gone(const char* name, EAccess type) {
    return {.strName = name, .type = type, .isDeleted = true};
}

SAccessColumn At(unsigned position, const char* name, EAccess type) {
    return {.strName = name, .type = type, .position = position};
}

const SColumnsCase columnsCases[] = {
    {"only columns of fixed size", {{"a", Long}, {"b", Long}}, {{{two, two}, Plain}}, "2|2\n"},
    {"only columns of variable size", {{"a"}, {"b"}}, {{{"a", "b"}, Plain}, {{{}, {}}, Plain}}, "a|b\n|\n"},
    {"columns added to rows",
     {{"a"}, {"b", Long}, {"c"}, {"d", Memo}, {"e", Long}, {"f", Boolean}},
     {{{"1"}, Plain},
      {{"1", two}, Moved},
      {{"1", two, "3"}, Plain},
      {{"1", {}, {}, "4"}, Plain},
      {{"1", two, "3", "4", two, true}, Plain}},
     "1|||||0\n1|2||||0\n1|2|3|||0\n1|||4||0\n1|2|3|4|2|-1\n"},
    {"deleted columns",
     {Gone("a", Text), {"b"}, Gone("c", Long), {"d", Long}, Gone("e", Text), {"f", Long}, {"g", Boolean}},
     {{{"old", "b", std::int64_t{3}, two, "old", two, true}, Plain}, {{{}, "b", {}, two, {}, {}, false}, Plain}},
     "b|2|2|-1\nb|2||0\n"},
    {"another order", {At(2, "a", Text), At(0, "b", Long), At(1, "c", Text)}, {{{"a", two, "c"}, Plain}}, "2|c|a\n"},
};

TEST(AccessLayout, Columns) {
    for (const SColumnsCase& known : columnsCases)
        for (const EJet version : someVersions) {
            CAccessWriter writer(version);
            CAccessTable& table = writer.AddTable("T", known.columns);
            for (const auto& [row, place] : known.rows)
                table.Add(row, {place, row.size()});
            EXPECT_EQ(RowsOf(writer), known.expected) << known.title << ", version " << int(version);
        }
}

TEST(AccessLayout, ManyColumnsWithLongNames) {
    for (const EJet version : someVersions) {
        std::vector<SAccessColumn> columns;
        AccessRow row, empty(255);
        std::string names, texts;
        for (int i = 0; i < 255; ++i) {
            const std::string number = std::to_string(i), separator = i == 0 ? "" : "|";
            const bool isText = i < 128 || i % 2 == 0;
            columns.push_back({number + std::string(64 - number.size(), 'x'), isText ? Text : Long});
            row.push_back(isText ? AccessValue("t" + number) : AccessValue(std::int64_t{i}));
            names += separator + columns.back().strName;
            texts += separator + (isText ? "t" : "") + number;
        }
        empty.back() = row.back();
        CAccessWriter writer(version);
        writer.AddTable("T", columns).Add(row).Add(empty);
        EXPECT_EQ(CAccessFile(writer.Finish().Bytes()).Rows("T", true),
                  names + "\n" + texts + "\n" + std::string(254, '|') + "t254\n")
            << int(version);
    }
}

} // namespace
} // namespace NSTQ::Tests
