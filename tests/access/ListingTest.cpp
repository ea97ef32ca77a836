// Which tables and saved queries a database offers, in which order, and the rows of the queries.
#include "access/AccessHarness.h"

#include <algorithm>
#include <map>
#include <sstream>

namespace NSTQ::Tests {
namespace {

using enum EAccess;
using QueryRows = std::vector<SAccessQueryRow>;

constexpr int linkedOdbc = 4, linked = 6, form = -32768;

std::string RowsIfOffered(const CAccessFile& file, const std::string& name, bool hasHeaderRow = false) {
    const bool isOffered = ('|' + file.Names() + '|').find('|' + name + '|') != std::string::npos;
    return isOffered ? file.Rows(name, hasHeaderRow) : "missing";
}

void AddSelection(CAccessWriter& writer, const std::string& name, std::int64_t flags = 0) {
    writer.AddQuery(name, {{0}, {1, 1}, {3, 1}, {5, {}, "", "beta"}, {255}}, flags);
}

TEST(AccessListing, OffersTablesAndQueriesInTheOrderOfNames) {
    for (const EJet version : allVersions) {
        CAccessWriter writer(version);
        for (const char* name : {"beta", "Gamma", "alpha 2", "~TMPCLP1", "Z$", "beta 10"})
            writer.AddTable(name, {{"a", Long}}).Add({std::int64_t{1}});
        writer.AddTable("MSysOther", {{"a", Long}}, {.isSystem = true}, CAccessWriter::systemFlag);
        writer.AddTable("Hidden", {{"a", Long}}, {}, CAccessWriter::hiddenFlag).Add({std::int64_t{2}});
        writer.AddTable("Own", {{"a", Long}}, {}, 2);
        writer.AddTable("Gone", {{"a", Long}}, {}, CAccessWriter::hiddenFlag | 1);
        writer.AddObject("Elsewhere", linked, 0x200000);
        writer.AddObject("Server", linkedOdbc, 0x100000);
        writer.AddObject("Form1", form, 0);
        writer.AddObject("", linked, 0);
        AddSelection(writer, "Delta");
        AddSelection(writer, "~sq_fForm1");
        const CAccessFile file(writer.Finish().Bytes());
        EXPECT_EQ(file.Names(), "alpha 2|beta|beta 10|Delta|Gamma|Hidden|Z$") << int(version);
        EXPECT_EQ(file.Rows("beta"), "1\n") << int(version);
        EXPECT_EQ(file.Rows("Delta") + file.Rows("Hidden"), "1\n2\n") << int(version);
    }
}

struct SQueryCase {
    const char* title;
    QueryRows rows;          ///< without start, type, and end; the table is T when none is given
    std::string strExpected; ///< the names of the columns and the rows; "missing" when it is not offered
    std::int64_t flags = 0;
};

const std::string wholeTable = "Id|Name|Price|Day|Note\n1|one|1.5|2023/03/15|first\n2|Two|-2|2023/03/15 12:00:00|\n"
                               "3||0||third\n4|o'ne|100||\n";

const SAccessQueryRow all = {3, 1};
SAccessQueryRow Column(const char* expression, const char* alias = "") {
    return {6, 0, expression, alias};
}
SAccessQueryRow Where(const char* condition) {
    return {8, {}, condition};
}

const SQueryCase queryCases[] = {
    {"all columns", {all}, wholeTable},
    {"columns by name", {Column("T.Name"), Column("[Id]")}, "Name|Id\none|1\nTwo|2\n|3\no'ne|4\n"},
    {"other names", {Column("[T].[Name]", "N"), Column("T.Id", "x y")}, "N|x y\none|1\nTwo|2\n|3\no'ne|4\n"},
    {"a table with another name", {{5, {}, "", "T", "q"}, Column("q.Id"), Where("q.Id=2")}, "Id\n2\n"},
    {"all columns of the table by name", {Column("T.*")}, wholeTable},
    {"all columns by a star", {Column("*")}, wholeTable},
    {"some rows", {Column("Id"), Where("((([T].[Id])>2))")}, "Id\n3\n4\n"},
    {"rows with nothing in a column", {Column("Id"), Where("((T.Note) Is Null)")}, "Id\n2\n4\n"},
    {"no row", {Column("Id"), Where("Id>99")}, "Id\n"},
    {"a condition on a long text", {all, Where("Note='third'")}, "Id|Name|Price|Day|Note\n3||0||third\n"},
    {"no table", {{5, {}, "", "None"}, all}, "missing"},
    {"no such column", {Column("Ident")}, "missing"},
    {"an expression", {Column("Id*2", "Twice")}, "missing"},
    {"a condition that is none", {all, Where("Id=")}, "missing"},
    {"a column of another table", {Column("U.Id")}, "missing"},
    {"two columns of one name", {Column("Id"), Column("Name", "id")}, "missing"},
    {"another database", {{4, {}, "", "C:\\other.mdb"}, all}, "missing"},
    {"a parameter", {{2, 4, "", "[Which?]"}, all, Where("Id=[Which?]")}, "missing"},
    {"each row once", {{3, 3}}, "missing"},
    {"the first rows", {{3, 17, "", "5"}}, "missing"},
    {"two tables", {{5, {}, "", "T"}, {5, {}, "", "T", "U"}, Column("T.Id")}, "missing"},
    {"an order", {all, {11, {}, "Id", "D"}}, "missing"},
    {"a cross table", {Column("Id")}, "missing", 16},
    {"a union", {all}, "missing", 128},
};

TEST(AccessListing, QueriesGiveTheirRowsOrAreNotOffered) {
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
        const CAccessFile file(writer.Finish().Bytes());
        for (std::size_t i = 0; i < std::size(queryCases); ++i)
            EXPECT_EQ(RowsIfOffered(file, "q" + std::to_string(i), true), queryCases[i].strExpected)
                << queryCases[i].title << ", version " << int(version);
    }
}

/// Conditions on the row of ConditionsAreCheckedOrRefused, separated by ';', and the rows of a query with each.
const struct {
    const char* outcome;
    std::string conditions;
} conditionCases[] = {
    {"5\n", "n=5;((([my table].[n])=5));[My Table].N = 5.0E0 AND 4<n;n >= -5 and n <= 5;x Is Null;n Is Not Null;"
            "n Between 1 And 5 AND s=\"tokyo\";s='TOKYO';s>\"tok\" And s<\"Z\";q='o''ne';o=\"a long text\";"
            "d=#1/1/2008 18:00:00#;d=#1/1/2008 6:00 PM#;d>#2008-01-01#;h=#12:30 AM#;c=12.3;b=True;"
            "y=200 AND i=-5 AND f=1.5 AND r=-0.25 AND l=5000000000;m=-12.5 AND k=18446744073709551616"},
    {"", "6<n;n<>5;(n) Between 6 And 9;s<>\"Tokyo\";s=\"it's \"\"so\"\"\";d<#12/31/2007 23:59:59#;c>12.3;x=1;x<>1;"
         "b=No"},
    {"missing", "n=5 OR n=6;Not n=5;s Like \"T*\";n In (5);n=[Which?];other.n=5;n=\"5\";s=5;g=5;n=n;n=-n;n=5 AND;n;5;"
                "5 Is Null;n=Null;n Between 9 And 6;n Between 5;(n=5;n=5);n=5 n=5;n=5x;n=#;d=#;d=#1/1#;d=#13/1/2008#;"
                "d=#1/1/08#;d=#24:00:00#;s=\"open;[n=5;n=Len(s);;"},
    {"missing", std::string(100'000, '(')},
};

TEST(AccessListing, ConditionsAreCheckedOrRefused) {
    CAccessWriter writer(EJet::Ace17);
    const std::pair<SAccessColumn, AccessValue> columns[] = {
        {{"n", Long}, std::int64_t{5}},
        {{"s"}, "Tokyo"},
        {{"d", Date}, 39448.75}, // 2008-01-01 18:00
        {{"h", Date}, 0.5 / 24},
        {{"c", Currency}, std::int64_t{123000}},
        {{"x", Integer}, {}},
        {{"b", Boolean}, true},
        {{"g", Guid}, std::string(16, 'g')},
        {{"q"}, "o'ne"},
        {{"o", Memo}, "a long text"},
        {{"y", Byte}, std::int64_t{200}},
        {{"i", Integer}, std::int64_t{-5}},
        {{"f", Single}, 1.5},
        {{"r", Double}, -0.25},
        {{"l", Large}, std::int64_t{5'000'000'000}},
        {{"m", Numeric, 2}, "-1250"},
        {{"k", Numeric}, "18446744073709551616"},
    };
    std::vector<SAccessColumn> definition;
    AccessRow row;
    for (const auto& [column, value] : columns) {
        definition.push_back(column);
        row.push_back(value);
    }
    writer.AddTable("My Table", definition).Add(row);
    std::map<std::string, std::string> expected;
    std::string condition;
    for (const auto& [outcome, conditions] : conditionCases)
        for (std::istringstream list(conditions); std::getline(list, condition, ';');) {
            const std::string name = "If " + condition.substr(0, 50);
            writer.AddQuery(name, {{1, 1}, {5, {}, "", "My Table"}, Column("n"), {8, {}, condition}});
            expected[name] = outcome;
        }
    const CAccessFile file(writer.Finish().Bytes());
    for (const auto& [name, outcome] : expected)
        EXPECT_EQ(RowsIfOffered(file, name), outcome) << name;
}

TEST(AccessListing, WhatDoesNotOpenSaysWhy) {
    CAccessWriter writer(EJet::Jet4);
    writer.AddObject("Far", linked, 0);
    writer.AddObject("Query", 5, 0);
    writer.AddTable("beta", {{"a"}}).Add({"b"});
    AddSelection(writer, "Delta");
    std::string bytes = writer.Finish().Bytes();
    const CAccessFile file(bytes);
    EXPECT_EQ(file.Rows("None"), "raised data.mdb: it has no table or query None");
    EXPECT_EQ(file.Rows("far"), "raised data.mdb: the table Far is in another database");
    EXPECT_EQ(file.Rows("Query"), "raised data.mdb: the query Query uses features that are not supported");

    bytes.replace(bytes.find(Utf16Bytes("Expression")), 1, "X");
    const CAccessFile damaged(bytes);
    EXPECT_EQ(damaged.Names(), "beta|Delta|Query") << "queries that are damaged stay listed";
    EXPECT_EQ(damaged.Rows("beta") + damaged.Rows("Delta").substr(0, 17), "b\nraised data.mdb: ");
}

} // namespace
} // namespace NSTQ::Tests
