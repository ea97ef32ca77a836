// tqc to JSON Lines and to SQLite.
#include "support/AccessWriter.h"
#include "tools/CToolTest.h"
#include "xlsx/XlsxBuilder.h"

#include <limits>

#ifdef TQC_WITH_SQLITE
#include <sqlite3.h>
#endif

namespace NSTQ::Tests {
namespace {

using namespace std::string_literals;

using ForeignFormats = CToolTest;

TEST_F(ForeignFormats, TextBecomesObjectsByNameOrArrays) {
    const std::string more = "a.csv: some rows have more fields than there are names; they are named by their "
                             "position, such as F2";
    const std::string renamed =
        "a.csv: columns without a name of their own were given one: 2 is \"a_2\", 3 is \"F3\", "
        "4 is \"a_3\"";
    const SCase cases[] = {
        {"a.csv --to jsonl", "n,é\n1, x y \n\"a \"\"b\"\" \\ / \x7F\", \n",
         "{\"n\":\"1\",\"é\":\"x y\"}\n"
         "{\"n\":\"a \\\"b\\\" \\\\ / \x7F\",\"é\":\"\"}\n"},
        {"a.csv --to jsonl --no-header", "1,2\n\"3\n4\r\n5678901\"\n", "[\"1\",\"2\"]\n[\"3\\n4\\r\\n5678901\"]\n"},
        {"a.csv -o out.jsonl", "a\n\n", "", "", 0, "out.jsonl{{\"a\":\"\"}\n}"},
        {"a.csv -o out.NDJSON", "a\n1\n", "", "", 0, "out.NDJSON{{\"a\":\"1\"}\n}"},
        {"a.csv -o out.jsonl --to csv", "a\n1\n", "", "", 0, "out.jsonl{a\r\n1\r\n}"},
        {"a.csv --out-dir d --to jsonl", "a\n1\n", "", "", 0, "d/a.jsonl{{\"a\":\"1\"}\n}"},
        {"a.csv --to jsonl --skip-rows 1 --limit 1", "a\n1\n2\n3\n", "{\"a\":\"2\"}\n"},
        {"a.csv --to jsonl", "a,b\n1\n", "{\"a\":\"1\",\"b\":null}\n"},
        {"a.csv --to jsonl", "a\n1,2\n3\n", "{\"a\":\"1\",\"F2\":\"2\"}\n{\"a\":\"3\",\"F2\":null}\n", more},
        {"a.csv --to jsonl", "a,a,,a\n1,2,3,4\n", "{\"a\":\"1\",\"a_2\":\"2\",\"F3\":\"3\",\"a_3\":\"4\"}\n",
         renamed},
        {"a.csv --to jsonl --encoding 932", "a\n\x82\xA0\n", "{\"a\":\"あ\"}\n"},
        {"a.csv --to jsonl", "a\n\xFFz\n", "{\"a\":\"\uFFFDz\"}\n", "row 2: bytes that are invalid", 1},
        {"a.csv b.csv --to jsonl", "a\n1\n", "{\"a\":\"1\"}\n", "b.csv: column 1 is named \"b\"", 5},
        {"a.csv --to json", "a\n", "", "\"json\" is invalid; allowed: csv, jsonl, sqlite", 2},
        {"a.csv --to jsonl --output-eol lf", "a\n", "", "--output-eol is for CSV; leave it out, or add --to csv", 2},
        {"a.csv --to jsonl --output-encoding 932", "a\n", "", "--output-encoding is for CSV", 2},
        {"a.csv --header --no-header", "a\n", "", "excludes", 2},
    };
    m_folder.WriteFile("b.csv", "b\n");
    Check(cases);
}

TEST_F(ForeignFormats, LongTextsAreEscapedInPieces) {
    const std::string text = Repeat("0123456789abc", 5000), content = "a\n\"" + text + "\"\"\"\n";
    const SCase cases[] = {{"a.csv --to jsonl", content, "{\"a\":\"" + text + "\\\"\"}\n"}};
    Check(cases);
    std::string many = "a\n", expected;
    for (int i = 0; i < 20000; ++i) {
        many += "\"\"\"" + std::to_string(i) + "\"\n";
        expected += "{\"a\":\"\\\"" + std::to_string(i) + "\"}\n";
    }
    const SCase next[] = {{"a.csv --to jsonl", many, expected}};
    Check(next);
}

TEST_F(ForeignFormats, SheetsKeepTheTypeOfEachCell) {
    SXlsxParts parts;
    parts.strFormats = "<cellXfs><xf numFmtId='0'/><xf numFmtId='22'/></cellXfs>";
    parts.strStrings = "<si><t>n</t></si>";
    parts.strRows = "<row><c t='s'><v>0</v></c><c t='str'><v>n</v></c></row>"
                    "<row><c><v>0.1</v></c><c t='b'><v>1</v></c></row>"
                    "<row><c><v>1E+300</v></c><c s='1'><v>45000.5</v></c></row>"
                    "<row><c><v>-123456789012345</v></c><c t='str'><v>x&quot;</v></c></row>"
                    "<row><c><v>0.30000000000000004</v></c></row>";
    m_folder.WriteFile("a.xlsx", parts.File());
    const SCase cases[] = {
        {"a.xlsx --to jsonl", "",
         "{\"n\":0.1,\"n1\":true}\n{\"n\":1e+300,\"n1\":\"2023-03-15T12:00:00\"}\n{\"n\":-123456789012345,"
         "\"n1\":\"x\\\"\"}\n{\"n\":0.30000000000000004,\"n1\":null}\n"},
        {"a.xlsx --to jsonl --no-header --skip 3 --limit 1", "", "[-123456789012345,\"x\\\"\"]\n"},
        {"a.xlsx --to jsonl --skip 1 --skip-rows 1 --limit 1 --columns true", "", "{\"true\":\"x\\\"\"}\n"},
        {"a.xlsx --to jsonl --limit 1 --exclude 1", "", "{\"n1\":true}\n"},
        {"a.xlsx --to jsonl --max-fields 1", "", "", "--max-field-size are for text and for CSV; leave them out", 2},
        {"a.xlsx --to jsonl --sheet x", "", "", "no sheet \"x\"; sheets: Sheet1", 3},
    };
    Check(cases);
}

#ifdef TQC_WITH_ACCESS
TEST_F(ForeignFormats, DatabasesLoseNothing) {
    using enum EAccess;
    CAccessWriter writer(EJet::Ace16);
    CAccessTable& table = writer.AddTable("T", {{.strName = "b", .type = Boolean},
                                                {.strName = "l", .type = Large},
                                                {.strName = "c", .type = Currency},
                                                {.strName = "s", .type = Single},
                                                {.strName = "d", .type = Double},
                                                {.strName = "n", .type = Numeric, .scale = 4},
                                                {.strName = "t", .type = Date},
                                                {.strName = "o", .type = Ole}});
    const double infinity = std::numeric_limits<double>::infinity();
    table.Add({true, std::numeric_limits<std::int64_t>::max(), std::int64_t{-5}, 0.1, 0.1,
               "123456789012345678901234"s, 45000.5, "\0\xFF\x10>"s});
    table.Add({false, {}, {}, infinity, infinity, {}, -0.25, ""s});
    m_folder.WriteFile("a.accdb", writer.Finish().Bytes());
    const std::string first = "{\"b\":true,\"l\":9223372036854775807,\"c\":-0.0005,\"s\":0.1,\"d\":0.1,"
                              "\"n\":12345678901234567890.1234,\"t\":\"2023-03-15T12:00:00\",\"o\":";
    const SCase cases[] = {
        {"a.accdb --to jsonl", "",
         first + "\"AP8QPg==\"}\n{\"b\":false,\"l\":null,\"c\":null,\"s\":null,\"d\":null,\"n\":null,"
                 "\"t\":\"06:00:00\",\"o\":\"\"}\n",
         "a.accdb: row 2: column 4 is no finite number and became null, column 5", 1},
        {"a.accdb --to jsonl --limit 1 --binary hex", "", first + "\"0x00FF103E\"}\n"},
        {"a.accdb --to jsonl --limit 1 --binary omit", "", first + "null}\n"},
    };
    Check(cases);
}

TEST_F(ForeignFormats, ValuesHaveTheWantedForms) {
    using enum EAccess;
    CAccessWriter writer(EJet::Ace16);
    CAccessTable& table = writer.AddTable("T", {{.strName = "b", .type = Boolean},
                                                {.strName = "d", .type = Double},
                                                {.strName = "t", .type = Date},
                                                {.strName = "o", .type = Ole},
                                                {.strName = "x", .type = Text}});
    table.Add({true, 0.5, 45000.5, "\0\xFF\x10>"s, {}});
    table.Add({false, 1.0, 45000.0, ""s, "x"});
    m_folder.WriteFile("a.accdb", writer.Finish().Bytes());
    const SCase cases[] = {
        {"a.accdb", "", "-1,0.5,2023/03/15 12:00:00,0x00FF103E,\r\n0,1,2023/03/15,0x,x\r\n"},
        {"a.accdb --iso --null NULL", "",
         "true,0.5,2023-03-15 12:00:00,0x00FF103E,NULL\r\nfalse,1,2023-03-15,0x,x\r\n"},
        {"a.accdb --iso --booleans ja/ --date-format d.M.yy --time-format hh~tt --decimal , --binary base64", "",
         "ja,\"0,5\",15.3.23 12 PM,AP8QPg==,\r\n,1,15.3.23,,x\r\n"},
        {"a.accdb --binary omit --limit 1", "", "-1,0.5,2023/03/15 12:00:00,,\r\n"},
        {"a.accdb --to jsonl --columns t --time-format HH:mm", "",
         "{\"t\":\"2023/03/15 12:00\"}\n{\"t\":\"2023/03/15\"}\n"},
        {"a.accdb --to jsonl --columns b,t --iso --limit 1", "", "{\"b\":true,\"t\":\"2023-03-15T12:00:00\"}\n"},
        {"a.accdb --to jsonl --null x", "", "", "--null is for CSV; leave it out, or add --to csv", 2},
        {"a.accdb --date-format yyy", "", "", "--date-format: \"yyy\" is invalid; allowed: yyyy, yy, MM", 2},
        {"a.accdb --time-format H:mmm", "", "", "allowed: HH, H, hh", 2},
        {"a.accdb --booleans yes", "", "", "with a slash between them, such as yes/no", 2},
        {"a.accdb --booleans a/b/c", "", "", "with a slash between them, such as yes/no", 2},
        {"a.accdb --decimal 10", "", "", "one character such as , or .", 2},
        {"a.accdb --null é", "", "", "at most 31 ASCII characters", 2},
    };
    Check(cases);
}
#endif

#ifdef TQC_WITH_SQLITE
/// All that SQLite reads in a database: the statement of each table, then its rows with their values as literals.
std::string Dump(const std::string& path) {
    std::string text;
    sqlite3* database = nullptr;
    const auto add = [](void* target, int count, char** values, char**) {
        for (int i = 0; i < count; ++i)
            static_cast<std::string*>(target)->append(i > 0 ? "|" : "").append(values[i]);
        static_cast<std::string*>(target)->append(";");
        return 0;
    };
    const auto run = [&](const std::string& statement) {
        std::string result;
        char* message = nullptr;
        sqlite3_exec(database, statement.c_str(), add, &result, &message);
        result += message == nullptr ? "" : message;
        sqlite3_free(message);
        return result;
    };
    sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READONLY, nullptr);
    EXPECT_EQ(run("PRAGMA integrity_check"), "ok;");
    const std::string statements = run("SELECT sql FROM sqlite_master ORDER BY rowid");
    for (std::size_t at = 0; at < statements.size(); at = statements.find(';', at) + 1) {
        const std::string statement = statements.substr(at, statements.find(';', at) - at);
        const std::size_t name = statement.find('"');
        const std::string table = statement.substr(name, statement.find("\" (", name) + 1 - name);
        const std::string quoted = run(
            "SELECT group_concat('quote(\"' || replace(name, '\"', '\"\"') || '\")', ',') FROM pragma_table_info(" +
            table + ")");
        text +=
            statement.substr(name) + ':' + run("SELECT " + quoted.substr(0, quoted.size() - 1) + " FROM " + table);
    }
    sqlite3_close(database);
    return text;
}

struct SDatabaseCase {
    std::string line; ///< the arguments, without the output
    std::string content;
    std::string dump;
    std::string errors = ""; ///< a part of standard error, which is empty if this is
    int status = 0;
};

class Sqlite : public CToolTest {
protected:
    void CheckDatabases(std::span<const SDatabaseCase> cases) const {
        for (const SDatabaseCase& c : cases) {
            SCOPED_TRACE(c.line + " of " + c.content);
            const std::string path = m_folder.WriteFile("out.sqlite", "the old one");
            if (!c.content.empty())
                m_folder.WriteFile("a.csv", c.content);
            const SResult result = Run(c.line + " -o out.sqlite");
            EXPECT_EQ(result.status, c.status);
            EXPECT_EQ(result.errors.empty(), c.errors.empty()) << result.errors;
            EXPECT_THAT(result.errors, testing::HasSubstr(c.errors));
            EXPECT_EQ(c.status > 1 ? m_folder.ReadFile("out.sqlite") : Dump(path),
                      c.status > 1 ? "the old one" : c.dump);
            for (const std::string& name : Names())
                EXPECT_EQ(name.find(".tqc-"), std::string::npos) << "a file that is left";
        }
    }
};

TEST_F(Sqlite, TextsBecomeTables) {
    m_folder.MakeFolder("b");
    m_folder.WriteFile("b/a.csv", "x\n1\n");
    m_folder.WriteFile("sqlite_b.csv", "\n");
    const SDatabaseCase cases[] = {
        {"a.csv", "n,\"q\"\"\"\n1,it's\n\"\",\"2\n3\"\n",
         "\"a\" (\"n\" TEXT, \"q\"\"\" TEXT):'1'|'it''s';''|'2\n3';"},
        {"a.csv --no-header --limit 1", "1,2\n3\n", "\"a\" (\"F1\" TEXT, \"F2\" TEXT):'1'|'2';"},
        {"a.csv", "a,A,\n1,2\n", "\"a\" (\"a\" TEXT, \"A_2\" TEXT, \"F3\" TEXT):'1'|'2'|NULL;",
         "2 is \"A_2\", 3 is \"F3\""},
        {"a.csv", "n\n1\n2,3\n4,5,6\n",
         "\"a\" (\"n\" TEXT, \"F2\" TEXT, \"F3\" TEXT):'1'|NULL|NULL;'2'|'3'|NULL;'4'|'5'|'6';",
         "more fields than there are names"},
        {"a.csv b/a.csv sqlite_b.csv", "n\n1\n",
         "\"a\" (\"n\" TEXT):'1';\"a_2\" (\"x\" TEXT):'1';\"_sqlite_b\" (\"F1\" TEXT):",
         "b/a.csv: its table in the database is named \"a_2\", because the name \"a\" is taken"},
        {"a.csv --columns 2", "n,m\n1,2\n", "\"a\" (\"m\" TEXT):'2';"},
        {"a.csv --on-error stop --max-fields 1", "n\n1,2\n", "", "row 2: more than 1 fields", 6},
        {"a.csv none.csv", "n\n", "", "none.csv: ", 3},
        {"a.csv", Repeat("a,", 2500) + "\n", "", "2501 columns, but SQLite allows 2000; select some with --columns",
         6},
    };
    CheckDatabases(cases);
    m_folder.WriteFile("a.csv", "n\n");
    const SCase others[] = {
        {"a.csv --to sqlite", "", "", "standard output: a database needs a file", 2},
        {"a.csv --to sqlite -o /dev/null", "", "", "/dev/null: a database needs a file", 2},
    };
    Check(others);
    EXPECT_EQ(Run("a.csv b/a.csv --to sqlite --out-dir d").status, 2); // both would be d/a.sqlite
    EXPECT_EQ(Run("sqlite_b.csv --to sqlite --out-dir d").status, 0);
    EXPECT_EQ(Dump(m_folder.Path("d/sqlite_b.sqlite")), "\"_sqlite_b\" (\"F1\" TEXT):");
}

TEST_F(Sqlite, SheetsBecomeTables) {
    SXlsxParts parts;
    parts.strFormats = "<cellXfs><xf numFmtId='0'/><xf numFmtId='22'/></cellXfs>";
    parts.strRows = "<row><c t='str'><v>n</v></c><c t='str'><v>d</v></c><c t='str'><v>m</v></c></row>"
                    "<row><c><v>1</v></c><c s='1'><v>45000.5</v></c><c><v>0.30000000000000004</v></c></row>"
                    "<row><c><v>0.5</v></c><c s='1'><v>45000</v></c><c t='b'><v>1</v></c></row>";
    m_folder.WriteFile("a.xlsx", parts.File());
    const SDatabaseCase cases[] = {
        {"a.xlsx", "",
         "\"Sheet1\" (\"n\" NUMERIC, \"d\" TEXT, \"m\" TEXT):1|'2023-03-15 12:00:00'|'0.30000000000000004';"
         "0.5|'2023-03-15'|'1';"},
        {"a.xlsx --skip 1 --all --columns 1,3", "", "\"Sheet1\" (\"1\", \"0.30000000000000004\"):0.5|1;"},
    };
    CheckDatabases(cases);
}

#ifdef TQC_WITH_ACCESS
TEST_F(Sqlite, DatabasesBecomeDatabases) {
    using enum EAccess;
    CAccessWriter writer(EJet::Ace16);
    CAccessTable& table = writer.AddTable("Prices", {{.strName = "b", .type = Boolean},
                                                     {.strName = "l", .type = Large},
                                                     {.strName = "s", .type = Single},
                                                     {.strName = "d", .type = Double},
                                                     {.strName = "c", .type = Currency},
                                                     {.strName = "n", .type = Numeric, .scale = 2},
                                                     {.strName = "t", .type = Date},
                                                     {.strName = "o", .type = Ole},
                                                     {.strName = "x", .type = Text}});
    table.Add({true, std::numeric_limits<std::int64_t>::min(), 0.1, 0.1, std::int64_t{-5}, "1234"s, 45000.5,
               "\0\xFF"s, "é"});
    table.Add({false, {}, {}, std::numeric_limits<double>::quiet_NaN(), std::int64_t{120000}, {}, 0.25, {}, {}});
    // More digits than SQLite's numbers have, so that the table is written twice.
    table.Add({false, {}, {}, {}, {}, "12345678901234567"s, {}, {}, {}});
    writer.AddTable("empty", {{.strName = "a", .type = Memo}});
    m_folder.WriteFile("a.accdb", writer.Finish().Bytes());
    const std::string columns = "\"b\" INTEGER, \"l\" INTEGER, \"s\" REAL, \"d\" REAL, \"c\" NUMERIC, \"n\" TEXT, "
                                "\"t\" TEXT, \"o\" BLOB, \"x\" TEXT";
    const std::string rows = ":1|-9223372036854775808|0.1|0.1|-0.0005|'12.34'|'2023-03-15 12:00:00'|X'00FF'|'é';"
                             "0|NULL|NULL|NULL|12|NULL|'06:00:00'|NULL|NULL;"
                             "0|NULL|NULL|NULL|NULL|'123456789012345.67'|NULL|NULL|NULL;";
    const std::string note = "a.accdb: table \"Prices\": row 2: column 4 is no number and became NULL";
    const SDatabaseCase cases[] = {
        {"a.accdb", "", "\"empty\" (\"a\" TEXT):\"Prices\" (" + columns + ')' + rows, note, 1},
        {"a.accdb --sheet E*", "", "\"empty\" (\"a\" TEXT):"},
        {"a.accdb a.accdb --sheet empty", "", "\"empty\" (\"a\" TEXT):\"a_empty\" (\"a\" TEXT):",
         "named \"a_empty\", because the name \"empty\" is taken"},
        {"a.accdb --limit 1 --columns n,o --binary hex --sheet prices", "",
         "\"Prices\" (\"n\" NUMERIC, \"o\" TEXT):12.34|'0x00FF';"},
    };
    CheckDatabases(cases);
    EXPECT_EQ(Run("a.accdb -o b.sqlite").errors, "tqc: " + note + '\n');
}
#endif
#endif

} // namespace
} // namespace NSTQ::Tests
