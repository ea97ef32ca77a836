// tqc on several inputs and on standard input, rejected rows, and JSON output.
#include "support/ZipWriter.h"
#include "tools/CToolTest.h"
#include "xlsx/XlsxBuilder.h"

#include <regex>
#include <set>

namespace NSTQ::Tests {
namespace {

using testing::HasSubstr;

/// Each run has these files in its folder.
class InputOutput : public CToolTest {
protected:
    void SetUp() override {
        CToolTest::SetUp();
        SXlsxParts parts;
        parts.strRows = "<row><c t='inlineStr'><is><t>say \"x, y\"</t></is></c><c><v>-1</v></c></row>";
        parts.sheetNames = {"Q 1", "Q\xE2\x82\xAC", "It's"};
        const std::pair<const char*, std::string> files[] = {
            {"a.csv", "n,v\n1,=1+2\n2,-12.5\n"},
            {"b.csv", "n,v\n3,x\n"},
            {"other.csv", "n,w\n4,y\n"},
            {"wide.csv", "p,q,r\n"},
            {"a.tsv", "t\tu\n"},
            {"bad.csv", BOM + "a,b\r\nc,\"d\"\",\",e\r\nf,g\r\nh,i,j\r\n"},
            {"long.csv", "a\n" + std::string(70'000, 'x') + "\nb\n"},
            {"sjis.csv", "\x95\x5C,1\n"},
            {"fix.txt", "ab1\ncd2!\nef3\n"},
            {"euro.csv", "a,\xE2\x82\xAC\nb,c\n"},
            {"z.xtqf", MakeZip({{.name = "TqData\\SourceFile.csv", .content = "k,l\nm,n,o\n"}})},
            {"book.xlsx", parts.File()},
            {"book.dat", parts.File()},
        };
        for (const auto& [name, content] : files)
            m_folder.WriteFile(name, content);
    }
};

TEST_F(InputOutput, WritesTheRequestedFilesAndNoOthers) {
    const std::string head = "row,offset,cause,record,file\r\n";
    const std::string book = "\"say \"\"x, y\"\"\",-1\r\n";
    const SCase cases[] = {
        // Several inputs into one output.
        {"convert a.csv b.csv --header --skip 1 -o o", "", "", "", 0, "o{n,v\r\n2,-12.5\r\n}"},
        {"book.xlsx book.xlsx --header", "", book},
        {"book.xlsx a.csv --header -o o", "", "", "a.csv: column 1 is named \"n\", but in book.xlsx \"say", 5},
        {"a.csv wide.csv -o o", "", "", "wide.csv: the first row has 3 fields, that of a.csv has 2", 5},
        {"a.csv b.csv -o ./b.csv", "", "", "would replace the input b.csv", 2},
        // One output each.
        {"b.csv a.tsv --out-dir x/y", "", "", "", 0, "x/y/a.csv{t,u\r\n}x/y/b.csv{n,v\r\n3,x\r\n}"},
        {"b.csv no.csv wide.csv --out-dir x", "", "", "no.csv: no such file", 3,
         "x/b.csv{n,v\r\n3,x\r\n}x/wide.csv{p,q,r\r\n}"},
        {"b.csv a.csv a.tsv --out-dir x", "", "", "x/a.csv: would be the output of both a.csv and a.tsv", 2},
        {"a.tsv a.csv --out-dir .", "", "", "would replace the input a.csv", 2},
        // Standard input.
        {"- --type csv <b.csv", "", "n,v\r\n3,x\r\n"},
        {"- --widths 2,1 <fix.txt", "", "ab,1\r\ncd,2\r\nef,3\r\n", "-: row 2: text after the last column, left out",
         1},
        {"b.csv - --type csv --out-dir x <a.tsv", "", "", "", 0, "x/b.csv{n,v\r\n3,x\r\n}x/stdin.csv{t u\r\n}"},
        {"- --type xlsx --sheet It's <book.xlsx", "", book},
        {"- --type xtqf --max-fields 2 <z.xtqf", "", "k,l\r\nm,n\r\n", "-: row 2: more than 2 fields", 1},
        {"- --separator ; <book.xlsx", "", "",
         "-: seems to be a zip archive, such as a workbook or package; give --type xlsx", 5},
        {"- <b.csv", "", "", "give --type: csv, tsv, fix, xls, xlsx, mdb, accdb, xtqf", 2},
        {"- - --type csv <b.csv", "", "", "only once", 2},
        {"list - --type xlsx --names <book.xlsx", "", "Q 1\nQ\xE2\x82\xAC\nIt's\n"},
        // Rows that are not complete.
        {"bad.csv --max-fields 2 --rejects r", "", "a,b\r\nf,g\r\n",
         "bad.csv: row 2: rejected: more than 2 fields; try", 1,
         "r{" + head +
             "2,8,\"more than 2 fields\",\"c,\"\"d\"\"\"\",\"\",e\",\"bad.csv\"\r\n"
             "4,25,\"more than 2 fields\",\"h,i,j\",\"bad.csv\"\r\n}"},
        {"bad.csv --max-fields 2 --on-error skip --quiet --limit 2", "", "a,b\r\nf,g\r\n", "", 1},
        {"bad.csv --max-fields 2 --on-error stop -o o", "", "", "row 2: more than 2 fields", 6},
        {"fix.txt b.csv --widths 2,1 --out-dir x --rejects r", "", "", "fix.txt: row 2: rejected: text", 1,
         "r{" + head +
             "2,4,\"text after the last column\",\"cd2!\",\"fix.txt\"\r\n}"
             "x/b.csv{\"n,\",v\r\n\"3,\",x\r\n}x/fix.csv{ab,1\r\nef,3\r\n}"},
        {"long.csv --rejects r", "", "a\r\nb\r\n", "row 2: rejected: 65535 bytes or more", 1,
         "r{" + head + "2,2,\"65535 bytes or more\",\"" + std::string(70'000, 'x') + "\",\"long.csv\"\r\n}"},
        {"z.xtqf --max-fields 2 --rejects r", "", "k,l\r\n", "row 2: rejected", 1,
         "r{" + head + "2,4,\"more than 2 fields\",\"m,n,o\",\"z.xtqf\"\r\n}"},
        {"book.xlsx --max-field-size 3 --rejects r", "", "", "row 1: rejected: field 1 has 10 bytes", 1,
         "r{" + head + "1,,\"field 1 has 10 bytes\",\"\"\"say \"\"\"\"x, y\"\"\"\"\"\",-1\",\"book.xlsx\"\r\n}"},
        {"euro.csv --output-encoding 932 --strict --rejects r", "", "b,c\r\n", "row 1: rejected: characters", 1,
         "r{" + head +
             "1,0,\"characters that 932 (shift_jis) cannot represent\",\"a,\xE2\x82\xAC\",\"euro.csv\"\r\n}"},
        {"euro.csv --header --output-encoding 932 --strict --on-error skip", "", "", "row 1: characters", 5},
        {"b.csv sjis.csv -o o --add-bom --rejects r", "", "", "sjis.csv: row 1: rejected: bytes", 1,
         "o{" + BOM + "n,v\r\n3,x\r\n}r{" + head +
             "1,0,\"bytes that are invalid in utf-8\",\"\x95\x5C,1\",\"sjis.csv\"\r\n}"},
        {"b.csv --rejects r", "", "n,v\r\n3,x\r\n", "", 0, "r{" + head + "}"},
        {"b.csv --rejects b.csv", "", "", "is also an input or the output", 2},
        {"b.csv --rejects r --on-error stop", "", "", "--on-error skip", 2},
        {"b.csv --rejects -", "", "", "both be standard output", 2},
        // Arguments in the wrong place.
        {"list a.csv b.csv", "", "", "this command takes one file", 2},
        {"a.csv info", "", "", "tqc info a.csv", 2},
        {"info a.csv -o o", "", "", "--output, --out-dir and --rejects are options of convert", 2},
        {"a.csv --json", "", "", "--json", 2},
    };
    Check(cases);
}

TEST_F(InputOutput, GuardsFormulasButNotNumbers) {
    const std::pair<std::string, std::string> cases[] = {
        {"=1+2", "'=1+2"},
        {"@x", "'@x"},
        {"+81-3", "'+81-3"},
        {"-", "'-"},
        {"-1e", "'-1e"},
        {"-12.5", "-12.5"},
        {"+1,5e-7", "+1,5e-7"},
        {"-.5E3", "-.5E3"},
        {"a=b", "a=b"},
        {"", ""},
        {"-1-2", "'-1-2"},
        {"'=x", "'=x"},
        {"\"\t=\"", "' ="},
        {"-,", "'-,"},
        {"1=", "1="},
        {"a,=1", "a,'=1"},
        {"a, -b,c", "a,' -b,c"},
        {"a,-1,5", "a,-1,5"},
        {"a, b", "a, b"},
        {"\xEF\xBC\x9D", "'="}}; // a fullwidth sign, of which the code page has only the plain form
    for (const auto& [field, guarded] : cases) {
        m_folder.WriteFile("f.dat", field + ";x\n" + field + ";x\n");
        const SResult result = Run("f.dat --separator ; --output-separator | --formula-guard --header "
                                   "--output-encoding 1252 --quiet");
        EXPECT_EQ(result.output, guarded + "|x\r\n" + guarded + "|x\r\n") << field;
    }
    const SCase others[] = {
        {"f.csv --formula-guard", BOM + BOM + "=1,a;=1\n", "'" + BOM + "=1,a;'=1\r\n"},
        {"f.csv --formula-guard --output-separator ; --skip 1", "x\n\"a;=1,\"\"@b\"\n", "\"a;=1,'\"\"@b\"\r\n"},
        {"=f.csv --formula-guard --max-fields 1 --rejects r", "=1;+b,-2\n", "", "row 1: rejected", 1,
         "r{row,offset,cause,record,file\r\n1,0,\"more than 1 fields\",\"'=1;'+b,-2\",\"'=f.csv\"\r\n}"},
        {"f.csv --formula-guard", "=" + std::string(65'533, 'x') + "\n", "'=" + std::string(65'533, 'x') + "\r\n"},
        {"f.csv --formula-guard", Repeat("x;=", 21'844) + "\n", Repeat("x;'=", 16'383) + "x\r\n",
         "more than 65535 bytes, truncated", 1},
    };
    Check(others);
}

TEST_F(InputOutput, DescribesFilesInJson) {
    EXPECT_EQ(Run("list book.xlsx --json --code-page 932").output,
              "{\n  \"file\": \"book.xlsx\",\n  \"type\": \"xlsx\",\n  \"tables\": [\n"
              "    {\n      \"name\": \"Q 1\",\n      \"rows\": 1,\n      \"columns\": 2\n    },\n"
              "    {\n      \"name\": \"Q\xE2\x82\xAC\",\n      \"rows\": 1,\n      \"columns\": 2\n    },\n"
              "    {\n      \"name\": \"It's\",\n      \"rows\": 1,\n      \"columns\": 2\n    }\n  ]\n}\n");
    const auto info = [this](const std::string& name) {
        return std::regex_replace(Run("info " + name + " --json").output,
                                  std::regex("\"20[0-9]{2}-[0-9]{2}-[0-9]{2}T[0-9:]{8}[+-][0-9]{4}\""), "TIME");
    };
    EXPECT_EQ(info("bad.csv"), "{\n  \"file\": \"bad.csv\",\n  \"type\": \"csv\",\n"
                               "  \"description\": \"comma-separated text\",\n  \"size\": 32,\n  \"updated\": TIME,\n"
                               "  \"characterSet\": \"utf-8\",\n  \"bom\": true,\n  \"lineEnd\": \"crlf\"\n}\n");
    // Neither the name nor the content is UTF-8, and the type is unknown.
    m_folder.WriteFile("\"\x1F\xC2\x9B\xFF.q", "\xFF\n");
    EXPECT_EQ(info("\"\x1F\xC2\x9B\xFF.q"),
              "{\n  \"file\": \"\\\"\\u001F\\u009B\xEF\xBF\xBD.q\",\n  \"type\": null,\n"
              "  \"description\": \"unknown\",\n  \"size\": 2,\n  \"updated\": TIME,\n"
              "  \"characterSet\": null,\n  \"bom\": false,\n  \"lineEnd\": \"lf\"\n}\n");
    EXPECT_THAT(info("z.xtqf"), testing::AllOf(HasSubstr("\"dataFileSize\": 10,"), HasSubstr("\"lineEnd\": \"lf\"")));
}

TEST_F(InputOutput, TheManualAndTheCompletionsHaveEveryOption) {
    std::set<std::string> options;
    const std::string help = Run("--help").output + Run("list --help").output;
    const std::regex option("\n  (?:-.,)?--([a-z-]+)");
    for (std::sregex_iterator found(help.begin(), help.end(), option), none; found != none; ++found)
        options.insert((*found)[1]);
    EXPECT_GT(options.size(), 30U);
    EXPECT_EQ(options.count("json"), 1U);
    const std::pair<const char*, const char*> texts[] = {{TQC_COMPLETIONS "/tqc.bash", "--NAME"},
                                                         {TQC_COMPLETIONS "/_tqc", "--NAME"},
                                                         {TQC_COMPLETIONS "/tqc.fish", "-l NAME"},
                                                         {TQC_MANUAL, "-NAME"}};
    for (const auto& [path, form] : texts) {
        std::ifstream file(path);
        const std::string text(std::istreambuf_iterator<char>(file), {});
        for (const std::string& name : options)
            EXPECT_TRUE(std::regex_search(
                text, std::regex(std::regex_replace(form, std::regex("NAME"), name) + "(?![a-z-])")))
                << path << " lacks " << name;
    }
    EXPECT_EQ(Run("--version").output.substr(0, 4), "tqc ");
    for (const std::string command : {"convert", "info", "preview", "list"})
        EXPECT_THAT(Run(command + " --help").output, HasSubstr("Examples:\n  tqc " + command));
}

} // namespace
} // namespace NSTQ::Tests
