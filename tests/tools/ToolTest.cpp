// tqc on delimited text: the detection of its type, its rows and their limits, and what is refused.
#include "support/ZipWriter.h"
#include "tools/CToolTest.h"

#include <regex>

namespace NSTQ::Tests {
namespace {

using namespace std::string_literals;
using Tool = CToolTest;

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
        {"a.csv", "\xFF\xFE"s + "a\0,\0"s, "", "UTF-16", 5},
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
        {"a.csv", "a\0,\0b\0"s, "", "UTF-16LE", 5},
        {"a.txt", "\0a\0,\0\x8B"s, "", "UTF-16BE", 5},
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
        {"a.csv --max-field-size 5", "abcd\nabc" + JAPANESE_UTF8 + ",z\n", "abcd\r\nabc,z\r\n",
         "row 2: field 1 has 6 bytes", 1},
        {"a.csv --max-line-size 4 --code-page 932", BOM + "abc\nabcd\n\nxyz\n", "abc\r\n\r\nxyz\r\n", leftOut, 1},
        {"a.csv --max-line-size 5", "a\n1,\"b\nc\nd\n", "a\r\nd\r\n",
         "row 2: the quote at byte 4 of the file is not closed before the row has 5 bytes, left out; try --no-q", 1},
        {"a.csv", "a\n1,\"b\nc\n", "a\r\n1,\"b\nc\n\"\r\n",
         "row 2: the quote at byte 4 of the file is not closed, so", 1},
        {"a.csv --on-error stop", "a\n1,\"b\nc\n", "a\r\n",
         "row 2: the quote at byte 4 of the file is not closed; try", 5},
        {"a.csv", std::string(65'534, 'x') + "\nb\n", std::string(65'534, 'x') + "\r\nb\r\n"},
        {"a.csv", "a,b,\x1A\x63\nd\n", "a,b\r\nc\r\nd\r\n", "row 1: ended by a SUB byte", 1},
        {"a.csv", "a\n\x1A\x62\n", "a\r\nb\r\n", "row 2: a SUB byte", 1},
        {"a.csv --max-fields 2 --quiet", "1,2,3\n", "1,2\r\n", "", 1},
        {"a.csv --skip 1 --limit 2", "1\n2\n3\n4\n", "2\r\n3\r\n"},
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
        {"a.csv --encoding utf-16", "", "", "auto, ansi, 932 (shift_jis)", 2},
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

TEST_F(Tool, InfoDescribesTheSamples) {
    const std::pair<const char*, const char*> cases[] = {
        {"prices-sjis.csv",
         "comma-separated text,not UTF-8, probably 932 (shift_jis); if so, give --encoding shift_jis,CR LF"},
        {"prices-sjis.csv --code-page 932", "comma-separated text,code page 932 (shift_jis),CR LF"},
        {"prices-utf8.csv --code-page 932", "comma-separated text,UTF-8 (BOM),CR LF"},
        {"stock.tsv", "tab-separated text,UTF-8,LF"},
        {"ledger.txt", "fixed-length text,UTF-8,CR LF"},
    };
    for (const auto& [line, told] : cases) {
        const auto size = std::filesystem::file_size(TQC_SAMPLES "/"s + Words(line)[0]);
        const std::regex form("Type:          (.*)\nSize:          " + std::to_string(size) +
                              " bytes\nUpdated:       20[0-9-]+ [0-9:]+ [+-][0-9]+\n"
                              "Character set: (.*)\nLine end:      (.*)\n");
        EXPECT_EQ(std::regex_replace(Run("info " TQC_SAMPLES "/"s + line).output, form, "$1,$2,$3"), told);
    }
}

} // namespace
} // namespace NSTQ::Tests
