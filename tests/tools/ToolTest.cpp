// tqc on delimited text, its arguments, several inputs, standard input, rejected rows, and JSON output.
#include "support/ZipWriter.h"
#include "tools/CToolTest.h"
#include "xlsx/XlsxBuilder.h"

#include <regex>
#include <set>

namespace NSTQ::Tests {
namespace {

using namespace std::string_literals;
using Tool = CToolTest;
using testing::HasSubstr;

const std::string JAPANESE_UTF8 = "\xE8\xA1\xA8"; // its second byte in Shift_JIS is a backslash
const std::string JAPANESE_SJIS = "\x95\x5C";

TEST_F(Tool, DetectsTypeLineEndAndCodePage) {
    m_folder.WriteFile("empty.dat", "");
    const std::string package = MakeZip({{.name = "TqData\\SourceFile.csv", .content = "k,l\n"}});
    const SCase cases[] = {
        {"a.csv", "a,b\r\n1,\"x,y\"\r\n", "a,b\r\n1,\"x,y\"\r\n"},
        {"a.csv", "a,b\r1,2\r", "a,b\r\n1,2\r\n"},
        {"a.csv", "x\"y,\"a\nb\"\r\nd\r\n", "\"x\"\"y\",\"a\nb\"\r\nd\r\n"},
        {"a.csv --quote-newline --output-eol cr", "\"a\nb\",\"\rc\"\n", "\"a\nb\",\"\rc\"\r"},
        {"a.csv --no-quote-newline", "\"a\nb\",c\n", "a\r\n\"b\"\"\",c\r\n"},
        {"a.csv --eol cr", "a\rb\nc\n", "a\r\nbc\r\n"},
        {"a.txt", "a,b\tc\n", "\"a,b\",c\r\n"},
        {"a.txt", "abc  1\r\n", "", "fixed-length", 5},
        {"a.dat", "a,b\n", "a,b\r\n"},
        {"./plain", "a\tb\n", "a,b\r\n"},
        {"empty.dat", "", ""},
        {"a.dat", "abc\n", "", "a.dat: unknown type", 5},
        {"a.xtqf --type tsv", "a\tb\n", "a,b\r\n"},
        {"a.dat --separator ;", "a;b\n", "a,b\r\n"},
        {"a.xls", "x", "", "a.xls: ", 5},
        // The content counts more than the name.
        {"a.csv", package, "k,l\r\n"},
        {"a.csv", MakeZip({{.name = "a.csv", .content = "k,l\n"}}), "", "a.csv: seems to be a zip archive", 5},
        {"a.csv --type tsv --limit 1", "PK\x03\x04\nb\n", "PK\r\n"},
        {"a.accdt", "PK\x03\x04", "", "a database template", 5},
        {"info a.txt", "%PDF-1.4\n,", "", "a PDF document; give --type csv", 5},
        {"preview a.csv", "\x89PNG\r\n\x1A\n", "", "an image", 5},
        {"a.dat --separator ;", "RIFF....WEBPVP8;\n", "", "an image", 5},
        {"a.csv", "\x1F\x8B\b", "", "compressed data", 5},
        {"a.csv", "a,b\n\0,c\n"s, "", "NUL bytes", 5},
        {"a.csv --type csv", "a,b\n\0,c\n"s, "a,b\r\n,c\r\n"},
        {"a.csv", "a\0,\0b\0"s, "", "UTF-16 text without a BOM; give --encoding utf-16le", 5},
        {"a.txt", "\0a\0,\0\x8B"s, "", "give --encoding utf-16be", 5},
        // The BOM, and the code page of the rows and of the path.
        {"a.csv", BOM, ""},
        {"a.csv --encoding ansi", BOM + "a\n", BOM + "a\r\n"},
        {"a.csv --code-page sjis", JAPANESE_SJIS, JAPANESE_SJIS + "\r\n"},
        {"a.csv --code-page 932", BOM + JAPANESE_UTF8 + ",\xE2\x82\xAC\n", JAPANESE_SJIS + ",?\r\n",
         "row 1: replaced: characters that 932 (shift_jis) cannot represent", 1},
        {"a.csv --code-page 932 --encoding utf-8", JAPANESE_UTF8 + "\n", JAPANESE_SJIS + "\r\n"},
        {JAPANESE_UTF8 + ".csv", "a\n", "a\r\n"},
        {JAPANESE_UTF8 + ".csv --code-page 932", "a\n", "a\r\n"},
        {"\xC2\xA5.csv --code-page 932", "a\n", "", "try --code-page 65001", 2},
        {"a\\b.csv", "a\n", "", "read as '/'", 2},
    };
    Check(cases);
}

TEST_F(Tool, ReportsEachRowThatIsNotComplete) {
    const std::string leftOut = "row 2: 4 bytes or more, left out";
    const SCase cases[] = {
        {"a.csv --max-fields 2", "1,2\n1,2,3\n1\n", "1,2\r\n1,2\r\n1\r\n", "a.csv: row 2: more than 2 fields", 1},
        {"a.csv --max-field-size 5", "abcd\nabc" + JAPANESE_UTF8 + ",z\n", "abcd\r\nabc,z\r\n", "field 1 has 6", 1},
        {"a.csv --max-line-size 4 --code-page 932", BOM + "abc\nabcd\n\nxyz\n", "abc\r\n\r\nxyz\r\n", leftOut, 1},
        {"a.csv --max-line-size 5", "a\n1,\"b\nc\nd\n", "a\r\nd\r\n",
         "row 2: the quote at byte 4 of the file is not closed before the row has 5 bytes, left out; try --no-q", 1},
        {"a.csv", "a\n1,\"b\nc\n", "a\r\n1,\"b\nc\n\"\r\n", "row 2: the quote at byte 4 of the file is not closed",
         1},
        {"a.csv --on-error stop", "a\n1,\"b\nc\n", "a\r\n", "the quote at byte 4 of the file is not closed", 5},
        {"a.csv", std::string(65'534, 'x') + "\nb\n", std::string(65'534, 'x') + "\r\nb\r\n"},
        {"a.csv", "a,b,\x1A\x63\nd\n", "a,b\r\nc\r\nd\r\n", "row 1: ended by a SUB byte", 1},
        {"a.csv --max-fields 1", "a\n\x1A\x62\nc,d\n", "a\r\nb\r\nc\r\n",
         "row 2: a SUB byte (1A) before it was dropped\ntqc: a.csv: row 3", 1},
        {"a.csv --max-fields 2 --quiet", "1,2,3\n", "1,2\r\n", "", 1},
        {"a.csv --skip-rows 1 --limit 2", "1\n2\n3\n4\n", "2\r\n3\r\n"},
    };
    Check(cases);
    m_folder.WriteFile("many.csv", Repeat("1,2\n", 12));
    const SResult result = Run("many.csv --max-fields 1");
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 11);
    EXPECT_THAT(result.errors, testing::ContainsRegex("row 10:.*\n.*2 more rows"));
}

TEST_F(Tool, RefusesInvalidArgumentsAndFiles) {
    m_folder.WriteFile("a.csv", "a\n");
    m_folder.WriteFile("readonly.csv", "old");
    m_folder.MakeFolder("folder.csv");
    std::filesystem::permissions(m_folder.Path("readonly.csv"), std::filesystem::perms{0444});
    const SCase cases[] = {
        {"", "", "", "no file given", 2},
        {"a.csv --bogus", "", "", "--bogus", 2},
        {"a.csv --type json", "", "", "csv, tsv, fix, xls, xlsx, mdb, accdb, xtqf", 2},
        {"a.csv --eol x", "", "", "crlf, lf, cr", 2},
        {"a.csv --encoding utf-7", "", "", "auto, ansi, 932 (shift_jis)", 2},
        {"a.csv --code-page 1251", "", "", "932 (shift_jis)", 2},
        {"a.csv --separator \"", "", "", "one ASCII character", 2},
        {"a.csv --max-fields 0", "", "", "1 to 65535", 2},
        {"a.csv --max-field-size 12x", "", "", "1 to 65535", 2},
        {"a.csv --skip -1", "", "", "0 to 18446744073709551615", 2},
        {"missing.csv", "", "", "missing.csv: no such file", 3},
        {"folder.csv", "", "", "a folder", 3},
        {Repeat("./", 130) + "a.csv", "", "", "260 bytes", 6},
        {"a.csv --output=", "", "", "--output", 2},
        {"a.csv -o folder.csv", "", "", "a folder", 7},
        {"a.csv -o nowhere/b.csv", "", "", "nowhere/b.csv", 7},
        {"a.csv -o readonly.csv", "", "", "is not writable", 7},
    };
    Check(cases);
    EXPECT_EQ(m_folder.ReadFile("readonly.csv"), "old");
}

TEST_F(Tool, LinesAndColumnsAreLeftOut) {
    const std::string report = "Of \"5\n\n\"Last, First\",3,Price,price,Name,name\na,b,c,d,e,f\ng\n1,2,3,4,5,66,7\n";
    m_folder.WriteFile("other.csv", "x\n\nB,A\n3,4\n");
    const SCase cases[] = {
        {"a.csv --skip 3", report, "a,b,c,d,e,f\r\ng\r\n1,2,3,4,5,66,7\r\n"},
        {"a.txt --skip 2 --header --skip-rows 2", "a\tb\nc\td\n1,2\n3,4\n5,6\n7,8\n", "1,2\r\n7,8\r\n"},
        {"a.csv --skip 8", report, "", "nothing is left after the first 8 lines"},
        {"a.csv --skip 70000", Repeat("\r\n", 70'000) + "a\r\n", "a\r\n"},
        {"a.csv --skip 1 --max-fields 1", BOM + "x\ny\n1,2\n", "y\r\n1\r\n", "row 3: more than 1 fields", 1},
        {"a.txt --skip 1 --widths 1,1", "abcdef", "c,d\r\ne,f\r\n"},
        {"preview a.csv --skip 4", report, "g\n1 | 2 | 3 | 4 | 5 | 66 | 7\n"},
        // Names win over numbers, exact ones over those in other case; what a row lacks is empty.
        {"a.csv --skip 2 --header --columns \"LAST,~first\",~Price~,3,price,1,1-2", report,
         "\"Last, First\",Price,3,price,\"Last, First\",\"Last, First\",3\r\na,c,b,d,a,a,b\r\ng,,,,g,g,\r\n"
         "1,3,2,4,1,1,2\r\n"},
        {"a.csv --skip 3 --columns 5-4,6-", report, "e,d,f\r\n,,\r\n5,4,66,7\r\n"},
        {"a.csv --skip 3 --exclude 2-,1 --columns 1-", report, "", "--exclude leaves no column", 2},
        {"a.csv --skip 3 --exclude 1-4", report, "e,f\r\n,\r\n5,66,7\r\n"},
        {"a.csv --skip 3 --columns 1 --max-field-size 1", report, "a\r\ng\r\n1\r\n"},
        {"a.csv --skip 3 --columns 6 --max-field-size 1 --rejects r", report, "f\r\n\r\n",
         "row 6: rejected: field 6 has 2 bytes", 1,
         "r{row,offset,cause,record,file\r\n6,59,\"field 6 has 2 bytes\",\"1,2,3,4,5,66,7\",\"a.csv\"\r\n}"},
        {"a.csv --code-page 932 --header --columns " + JAPANESE_UTF8, "\x95\x5C\n1\n", "\x95\x5C\r\n1\r\n"},
        {"a.csv other.csv --header --skip 2 --columns a,b", "\n\nA,B\n1,2\n", "A,B\r\n1,2\r\n4,3\r\n"},
        {"a.csv --skip 2 --header --columns PRICE", report, "", "columns 3 and 4 are both named \"PRICE\" if case",
         3},
        {"a.csv --header --columns a", "a,a\n", "", "columns 1 and 2 are both named \"a\"; give the number", 3},
        {"a.csv --skip 2 --header --columns Prize", report, "", "\"Prize\"; columns: Last, First, 3, Price, pr", 3},
        {"a.csv --skip 3 --columns 7", report, "", "no column 7; the number of columns is 6", 3},
        {"a.csv --columns Name", report, "", "or --header if the first row holds the names", 2},
        {"a.csv --columns a,,b", report, "", "names, numbers from 1 and ranges such as 3-5", 2},
    };
    Check(cases);
}

TEST_F(Tool, SeparatorsAreRecognised) {
    const std::string doubt = "a.csv: the separator is not clear, ',' is taken; if it is not the right one, give "
                              "--separator ";
    const SCase cases[] = {
        {"a.csv", "n;v\n1;2\n", "n,v\r\n1,2\r\n"},
        {"a.csv", "n|v\n1|2\n", "n,v\r\n1,2\r\n"},
        {"a.csv", "n\tv\n1\t2\n", "n,v\r\n1,2\r\n"},
        {"a.dat", BOM + "Sales\n\nn;v\n1,5;2,5\n", "Sales\r\n\r\nn,v\r\n\"1,5\",\"2,5\"\r\n"},
        {"a.txt", "x|y|z\r\n1|2|3\r\n", "x,y,z\r\n1,2,3\r\n"},
        // Commas in numbers and texts.
        {"a.csv", "1,5;2,25\n3,0;4,5\n", "\"1,5\",\"2,25\"\r\n\"3,0\",\"4,5\"\r\n"},
        {"a.csv", "n;v\nLee, Ann;1\nPoe, Al;2\n", "n,v\r\n\"Lee, Ann\",1\r\n\"Poe, Al\",2\r\n"},
        {"a.csv", "\"a,b\";\"c\"\n\"d\";\"e\"\"\nf,g\"\n", "\"a,b\",c\r\nd,\"e\"\"\nf,g\"\r\n"},
        {"a.csv", "\"a;b\",\"c;d\"\n\"e;f\",g\n", "a;b,c;d\r\ne;f,g\r\n"},
        {"a.csv", "a;x, y, z\nb;x\nc;x, y\nd;x, y, z, w\n",
         "a,\"x, y, z\"\r\nb,x\r\nc,\"x, y\"\r\nd,\"x, y, z, w\"\r\n"},
        // What reads as comma-separated stays so.
        {"a.csv", "1,2,3\n4,5,6\n", "1,2,3\r\n4,5,6\r\n"},
        {"a.csv", "n,list\n1,a;b\n2,c;d\n", "n,list\r\n1,a;b\r\n2,c;d\r\n"},
        {"a.csv", "n,v,w\n1,x;y,2\n3,z,\n", "n,v,w\r\n1,x;y,2\r\n3,z,\r\n"},
        {"a.csv", "x,a;b\n\n\n", "x,a;b\r\n\r\n\r\n"},
        {"a.csv", "1,a;b;c\n2,c;d;e\n", "1,a;b;c\r\n2,c;d;e\r\n", doubt + "';'"},
        {"a.csv", "a;b\nc;d\ne;f;g\nh;i\nj;k;l\n", "a;b\r\nc;d\r\ne;f;g\r\nh;i\r\nj;k;l\r\n", doubt + "';'"},
        {"a.csv", "Dear Sir;\nwe write\nto you\n", "Dear Sir;\r\nwe write\r\nto you\r\n"},
        {"a.txt", "a\tb;c\nd\te;f\n", "a,b;c\r\nd,e;f\r\n"},
        {"a.dat", "a|b\nc d\n", "", "neither a comma, semicolon, bar nor TAB", 5},
        // A quote that is not closed, or is not at the beginning of a field, hides nothing.
        {"a.csv", "5\";x\n6;\"y\n7;z\n", "\"5\"\"\",x\r\n6,\"y\n7;z\n\"\r\n", "the quote at byte 7", 1},
        {"a.csv --no-quote-newline", "a;\"b\nc;d\n", "a,b\r\nc,d\r\n"},
        {"a.csv", "sep=;\nx,y;z,w\n", "sep=,\r\n\"x,y\",\"z,w\"\r\n"},
        {"a.csv --skip 1", "n,v,w\n1;2\n", "1,2\r\n"},
        // Options and the extension win.
        {"a.csv --type csv", "n;v\n1;2\n", "n;v\r\n1;2\r\n"},
        {"a.csv --separator ,", "n;v\n1;2\n", "n;v\r\n1;2\r\n"},
        {"a.tsv", "a;b;c\td\ne;f;g\n", "a;b;c,d\r\ne;f;g\r\n"},
    };
    Check(cases);
}

TEST_F(Tool, InfoDescribesAFile) {
    const std::regex form(
        "Type:          comma-separated text\nSize:          [0-9]+ bytes\nUpdated:       20[0-9-]+ "
        "[0-9:]+ [+-][0-9]+\nCharacter set: UTF-8 \\(BOM\\)\nLine end:      CR LF\nSeparator:     comma\n");
    EXPECT_TRUE(std::regex_match(Run("info " TQC_SAMPLES "/prices-utf8.csv").output, form));
}

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
        {"convert a.csv b.csv --header --skip-rows 1 -o o", "", "", "", 0, "o{n,v\r\n2,-12.5\r\n}"},
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
        {"- --widths 2,1 <fix.txt", "", "ab,1\r\ncd,2\r\nef,3\r\n", "-: row 2: text after the last column", 1},
        {"b.csv - --type csv --out-dir x <a.tsv", "", "", "", 0, "x/b.csv{n,v\r\n3,x\r\n}x/stdin.csv{t u\r\n}"},
        {"- --type xlsx --sheet It's <book.xlsx", "", book},
        {"- --type xtqf --max-fields 2 <z.xtqf", "", "k,l\r\nm,n\r\n", "-: row 2: more than 2 fields", 1},
        {"- --separator ; <book.xlsx", "", "", "-: seems to be a zip archive, such as a workbook", 5},
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
        {"b.csv --rejects b.csv", "", "", "the file for rejected rows is also an input", 2},
        {"b.csv --rejects r --on-error stop", "", "", "--on-error skip", 2},
        {"b.csv --strict --replace", "", "", "exclude each other", 2},
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
        {"=1+2", "'=1+2"},       {"@x", "'@x"},          {"+81-3", "'+81-3"},   {"-", "'-"},  {"-1e", "'-1e"},
        {"-12.5", "-12.5"},      {"+1,5e-7", "+1,5e-7"}, {"-.5E3", "-.5E3"},    {"", ""},     {"-1-2", "'-1-2"},
        {"'=x", "'=x"},          {"\"\t=\"", "' ="},     {"-,", "'-,"},         {"1=", "1="}, {"a,=1", "a,'=1"},
        {"a, -b,c", "a,' -b,c"}, {"a,-1,5", "a,-1,5"},   {"\xEF\xBC\x9D", "'="}}; // a fullwidth sign, of which the
                                                                                  // code page has only the plain form
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
        {"f.csv --formula-guard --separator ,", Repeat("x;=", 21'844) + "\n", Repeat("x;'=", 16'383) + "x\r\n",
         "than 65535", 1},
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
                               "  \"characterSet\": \"utf-8\",\n  \"bom\": true,\n  \"lineEnd\": \"crlf\",\n"
                               "  \"separator\": \",\"\n}\n");
    // Neither the name nor the content is UTF-8, and the type is unknown.
    m_folder.WriteFile("\"\x1F\xC2\x9B\xFF.q", "\xFF\n");
    EXPECT_EQ(info("\"\x1F\xC2\x9B\xFF.q"),
              "{\n  \"file\": \"\\\"\\u001F\\u009B\xEF\xBF\xBD.q\",\n  \"type\": null,\n"
              "  \"description\": \"unknown\",\n  \"size\": 2,\n  \"updated\": TIME,\n"
              "  \"characterSet\": null,\n  \"bom\": false,\n  \"lineEnd\": \"lf\"\n}\n");
    EXPECT_THAT(info("z.xtqf"), testing::AllOf(HasSubstr("\"dataFileSize\": 10,"), HasSubstr("\"lineEnd\": \"lf\"")));
#ifdef TQC_WITH_ACCESS
    EXPECT_THAT(info(TQC_SAMPLES "/stock.accdb"),
                HasSubstr("\"name\": \"Price\",\n          \"type\": \"currency\",\n          \"first\": 0.125\n"));
    EXPECT_THAT(info(TQC_SAMPLES "/stock-locked.accdb"), HasSubstr("\"tables\": null"));
#endif
    EXPECT_THAT(info("book.xlsx"), HasSubstr("\"rows\": 0,\n"));
    EXPECT_THAT(info("book.xlsx --no-header"), HasSubstr("\"rows\": 1,\n"));
    m_folder.WriteFile("damaged.xlsx", "PK\3\4");
    EXPECT_EQ(Run("info damaged.xlsx").status, 5);
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
