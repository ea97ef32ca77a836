// What a database offers: which tables and saved queries, in which order, and what the queries give.
#include "access/AccessHarness.h"
#include "support/AnsiPage.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace NSTQ::Tests {
namespace {

using enum EAccess;
using QueryRows = std::vector<SAccessQueryRow>;

constexpr int linkedOdbc = 4, linked = 6, form = -32768;

void AddSelection(CAccessWriter& writer, const std::string& name, std::int64_t flags = 0) {
    writer.AddQuery(name, {{0}, {1, 1}, {3, 1}, {5, {}, "", "beta"}, {255}}, flags);
}

TEST(AccessListing, OffersTablesAndQueriesInTheOrderOfNames) {
    for (const EJet version : allVersions) {
        CAccessWriter writer(version);
        for (const char* name : {"beta", "Gamma", "alpha 2", "~TMPCLP1", "Z$", "beta 10"})
            writer.AddTable(name, {{"a", Long}}).Add({std::int64_t{1}});
        writer.AddTable("MSysOther", {{"a", Long}}, {.isSystem = true}, CAccessWriter::systemFlag);
        writer.AddTable("Hidden", {{"a", Long}}, {}, CAccessWriter::hiddenFlag);
        writer.AddTable("Own", {{"a", Long}}, {}, 2);
        writer.AddObject("Elsewhere", linked, 0x200000, "C:\\other.mdb", "beta");
        writer.AddObject("Server", linkedOdbc, 0x100000, {}, "dbo.beta");
        writer.AddObject("Form1", form, 0);
        AddSelection(writer, "Delta");
        AddSelection(writer, "~sq_fForm1");
        CAccessFile file(writer.Finish().Bytes(), version > EJet::Jet4 ? "data.accdb" : "data.mdb");
        EXPECT_EQ(file.Names(), "alpha 2|beta|beta 10|Delta|Gamma|Z$") << int(version);
        EXPECT_EQ(file.Rows("beta"), "1\n") << int(version);
        EXPECT_EQ(file.Rows("Delta"), "1\n") << int(version);
    }
}

struct SQueryCase {
    const char* title;
    QueryRows rows;          ///< without start, type, and end; the table is T when none is given
    std::string strExpected; ///< names of columns, then rows; or "missing"
    std::int64_t flags = 0;
};

const std::string wholeTable = "Id|Name|Price|Day|Note\n1|one|1.5|2023/03/15|first\n2|Two|-2|2023/03/15 12:00:00|\n"
                               "3||0||third\n4|o'ne|100||\n";

SAccessQueryRow All() {
    return {3, 1};
}
SAccessQueryRow Column(const char* expression, const char* alias = "") {
    return {6, 0, expression, alias};
}
SAccessQueryRow Where(const char* condition) {
    return {8, {}, condition};
}

const SQueryCase queryCases[] = {
    {"all columns", {All()}, wholeTable},
    {"columns by name", {Column("T.Name"), Column("[Id]")}, "Name|Id\none|1\nTwo|2\n|3\no'ne|4\n"},
    {"columns with other names",
     {Column("[T].[Name]", "N"), Column("T.Id", "x y")},
     "N|x y\none|1\nTwo|2\n|3\no'ne|4\n"},
    {"a table with another name", {{5, {}, "", "T", "q"}, Column("q.Id"), Where("q.Id=2")}, "Id\n2\n"},
    {"a number", {Column("Id"), Where("((([T].[Id])>2))")}, "Id\n3\n4\n"},
    {"two conditions", {Column("Id"), Where("Id>=2 AND Id<>3")}, "Id\n2\n4\n"},
    {"a text, whatever its case", {Column("Id"), Where("(((T.Name)=\"TWO\"))")}, "Id\n2\n"},
    {"a text with a quote", {Column("Id"), Where("Name='o''ne'")}, "Id\n4\n"},
    {"a currency", {Column("Id"), Where("Price<=1.5 and price>-2")}, "Id\n1\n3\n"},
    {"a range", {Column("Id"), Where("Id Between 2 And 3")}, "Id\n2\n3\n"},
    {"a day, month first", {Column("Id"), Where("Day=#3/15/2023#")}, "Id\n1\n"},
    {"a moment", {Column("Id"), Where("Day>#3/15/2023 11:59:59#")}, "Id\n2\n"},
    {"nothing there", {Column("Id"), Where("((T.Note) Is Null)")}, "Id\n2\n4\n"},
    {"something there", {Column("Id"), Where("Name IS NOT NULL")}, "Id\n1\n2\n4\n"},
    {"nothing equals nothing", {Column("Id"), Where("Name<>'one'")}, "Id\n2\n4\n"},
    {"no row", {Column("Id"), Where("Id>99")}, "Id\n"},
    {"a condition on a long text that is also shown",
     {All(), Where("Note='third'")},
     "Id|Name|Price|Day|Note\n3||0||third\n"},
    {"no table", {{5, {}, "", "None"}, All()}, "missing"},
    {"no such column", {Column("Ident")}, "missing"},
    {"an expression", {Column("Id*2", "Twice")}, "missing"},
    {"a function", {Column("Left(Name,1)", "L")}, "missing"},
    {"a choice of conditions", {All(), Where("Id=1 OR Id=2")}, "missing"},
    {"a pattern", {All(), Where("Name Like \"o*\"")}, "missing"},
    {"a condition that is none", {All(), Where("Id=")}, "missing"},
    {"a parameter", {{2, 4, "", "[Which?]"}, All(), Where("Id=[Which?]")}, "missing"},
    {"each row once", {{3, 3}}, "missing"},
    {"the first rows", {{3, 17, "", "5"}}, "missing"},
    {"two tables", {{5, {}, "", "T"}, {5, {}, "", "T", "U"}, Column("T.Id")}, "missing"},
    {"joined tables",
     {{5, {}, "", "T"}, {5, {}, "", "T", "U"}, {7, 1, "T.Id=U.Id", "T", "U"}, Column("T.Id")},
     "missing"},
    {"groups", {Column("Name"), {9, 0, "Name"}}, "missing"},
    {"an order", {All(), {11, {}, "Id", "D"}}, "missing"},
    {"a cross table", {Column("Id")}, "missing", 16},
    {"a deletion", {All()}, "missing", 32},
    {"an update", {Column("1", "Id")}, "missing", 48},
    {"an insertion", {Column("Id")}, "missing", 64},
    {"a union", {All()}, "missing", 128},
};

TEST(AccessListing, QueriesGiveTheirRowsOrAreNotOffered) {
    const CAnsiPage page(1252);
    for (const EJet version : {EJet::Jet3, EJet::Jet4, EJet::Ace14}) {
        CAccessWriter writer(version);
        writer.AddTable("T", {{"Id", Long}, {"Name"}, {"Price", Currency}, {"Day", Date}, {"Note", Memo}})
            .Add({std::int64_t{1}, "one", std::int64_t{15000}, 45000.0, "first"})
            .Add({std::int64_t{2}, "Two", std::int64_t{-20000}, 45000.5, {}})
            .Add({std::int64_t{3}, {}, std::int64_t{0}, {}, "third"})
            .Add({std::int64_t{4}, "o'ne", std::int64_t{1000000}, {}, {}});
        for (std::size_t i = 0; i < std::size(queryCases); ++i) {
            QueryRows rows = {{0}, {1, 1}};
            const QueryRows& own = queryCases[i].rows;
            if (std::ranges::none_of(own, [](const SAccessQueryRow& row) { return row.attribute == 5; }))
                rows.push_back({5, {}, "", "T"});
            rows.insert(rows.end(), own.begin(), own.end());
            rows.push_back({255});
            writer.AddQuery("q" + std::to_string(i), rows, queryCases[i].flags);
        }
        CAccessFile file(writer.Finish().Bytes());
        for (std::size_t i = 0; i < std::size(queryCases); ++i) {
            const std::string name = "q" + std::to_string(i);
            const std::string names = file.ColumnNames(name);
            EXPECT_EQ(names == "missing" ? names : names + "\n" + file.Rows(name), queryCases[i].strExpected)
                << queryCases[i].title << ", version " << int(version);
        }
    }
}

TEST(AccessListing, AQueryOverManyLongTexts) {
    CAccessWriter writer(EJet::Jet4);
    CAccessTable& table = writer.AddTable("T", {{"Id", Long}, {"Note", Memo}});
    std::string expected;
    for (std::int64_t i = 0; i < 40; ++i) {
        const std::string note(5000, static_cast<char>('a' + i % 3));
        table.Add({i, note});
        if (i % 3 != 1)
            expected += note + "\n";
    }
    const std::string other(5000, 'b');
    writer.AddQuery("q", {{0},
                          {1, 1},
                          {5, {}, "", "T"},
                          Column("Note"),
                          Where(("Note<>'x' AND Note IS NOT NULL AND Note<>'" + other + "'").c_str()),
                          {255}});
    CAccessFile file(writer.Finish().Bytes());
    EXPECT_EQ(file.Names(), "q|T");
    EXPECT_EQ(file.Rows("q"), expected);
}

} // namespace
} // namespace NSTQ::Tests
