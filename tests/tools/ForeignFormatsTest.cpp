// tqc to JSON Lines.
#include "support/AccessWriter.h"
#include "tools/CToolTest.h"
#include "xlsx/XlsxBuilder.h"

#include <limits>

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
        {"a.csv --to json", "a\n", "", "\"json\" is invalid; allowed: csv, jsonl", 2},
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
#endif

} // namespace
} // namespace NSTQ::Tests
