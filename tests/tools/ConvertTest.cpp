// tqc on fixed-length text, packages and workbooks, and between encodings.
#include "support/ZipWriter.h"
#include "tools/CToolTest.h"
#include "xlsx/XlsxBuilder.h"

namespace NSTQ::Tests {
namespace {

using testing::HasSubstr;

const std::string UTF8 = "\xE8\xA1\xA8,\"a b\",1\r\n"; // 表, whose second byte in Shift_JIS is a backslash
const std::string SJIS = "\x95\x5C,\"a b\",1\r\n";
const std::string UTF8_OUT = "\xE8\xA1\xA8,a b,1\r\n";
const std::string SJIS_OUT = "\x95\x5C,a b,1\r\n";

using Convert = CToolTest;

TEST_F(Convert, BetweenEncodings) {
    // After these bytes, the reader's next buffer begins two bytes later.
    const std::string line(999, 'x'), fill = Repeat(line + "\n", 63) + line.substr(1);
    const std::string fillOut = Repeat(line + "\r\n", 63) + line.substr(1);
    const SCase cases[] = {
        {"a.csv --encoding shift_jis", SJIS, UTF8_OUT},
        {"a.csv --output-encoding 932", BOM + UTF8, SJIS_OUT},
        {"a.csv --encoding 932 --code-page 1252 --add-bom --output-encoding utf-8", SJIS, BOM + UTF8_OUT},
        // Characters that the output cannot represent, or only in another form, and invalid bytes.
        {"a.csv --output-encoding 932", "a,\xC3\xA9\xE2\x82\xAC\nb\n", "a,e?\r\nb\r\n", "row 1: replaced", 1},
        {"a.csv --encoding 932", "a,\x81\x20\xFFz\n", "a,\xE3\x83\xBB\xEF\xA3\xB3z\r\n", "row 1: bytes that are", 1},
        {"a.csv --output-encoding 932 --strict", "a\n\xE2\x82\xAC\n", "a\r\n", "row 2: characters", 5},
        // Bytes that are not UTF-8, and the encoding that is detected.
        {"a.csv --add-bom", "a\n" + SJIS, BOM + "a\r\n\xEF\xBF\xBD\\,a b,1\r\n",
         "row 2: bytes that are invalid in utf-8, replaced; try another --encoding", 1},
        {"a.csv --output-encoding 932 --encoding utf-8", SJIS, "?\\,a b,1\r\n", "a.csv: row 1: bytes that", 1},
        {"a.csv --quiet --strict", "a\n\xC3\n", "a\r\n", "row 2: bytes that are invalid in utf-8; try another", 5},
        {"a.csv --on-error skip", "a\n\xE8\xA1,\xF4\x8F\xBFz\n", "a\r\n", "row 2: rejected: bytes that", 1},
        {"a.txt --widths 2,1", "\xE8\xA1\xA8\n", "\xEF\xBF\xBD,\xEF\xBF\xBD\r\n", "row 1: bytes that", 1},
        {"preview a.csv", "\xC8\xAD\xC8\xAD\xC1\n", "\xC8\xAD\xC8\xAD\xEF\xBF\xBD\n", "a.csv: mostly UTF-8"},
        {"a.csv --limit 0", "\x83\x66\x81[\x83^,\x96\xBC\x8C\xC3\x89\xAE\x82\xCC\x95\x5C\n", "",
         "not UTF-8, probably 932 (shift_jis); if so, give --encoding shift_jis"},       // データ,名古屋の表
        {"a.csv --limit 0", "\xC3\xDE\xB0\xC0 \xCC\xDE\xC2,1\n", "", "932 (shift_jis)"}, // ﾃﾞｰﾀ ﾌﾞﾂ,1
        {"a.csv --limit 0", "\xBC\xAD\xBF\xEF \xC0\xCC\xB8\xA7\n", "", "949 (cp949)"},   // 서울 이름
        // 我们是在中国的人
        {"a.csv --limit 0", "\xCE\xD2\xC3\xC7\xCA\xC7\xD4\xDA\xD6\xD0\xB9\xFA\xB5\xC4\xC8\xCB\n", "", "936 (gbk)"},
        {"a.csv --limit 0", "\xBBO\xA5_\xA4\xD1\xAE\xF0,\xA7\xDA\xAD\xCC\xACO\n", "",
         "950 (big5)"},                                                         // 臺北天氣,我們是
        {"a.csv --limit 0", "Gr\xF6\xDF\x65,\xE9t\xE9\n", "", "1252 (cp1252)"}, // Größe,été
        {"a.csv --limit 0", "\xA4\xEA\xA4\xF3\xA4\xB4\xA4\xAF\xA4\xC0\xA4\xB5\xA4\xA4\xC9\xBD\n", "",
         "a.csv: not UTF-8; give its encoding with --encoding: 932"}, // りんごください表 in EUC
        {"a.csv --limit 0", UTF8 + UTF8 + "\xFF\n", "", "a.csv: mostly UTF-8"},
        {"a.csv --limit 63", fill, fillOut.substr(0, fillOut.size() - 998)},
        {"a.csv", fill + "\xE8\xA1\xA8\nz\n", fillOut + "\xE8\xA1\xA8\r\nz\r\n"},
        {"a.csv", fill + "\xE8\xA1z\n", fillOut + "\xEF\xBF\xBDz\r\n", "a.csv: row 64: bytes that", 1},
        // A second code of a character, and the default character itself, are no loss.
        {"a.csv --encoding 932", "\x87\x90?,\x81\x45\n", "\xE2\x89\x92?,\xE3\x83\xBB\r\n"},
        // A field that is too long in the output is truncated after a whole character.
        {"a.csv --encoding 1252 --output-encoding 932", std::string(40'001, '\xD7') + "\n",
         Repeat("\x81\x7E", 32'767) + "\r\n", "more than 65535 bytes", 1},
        {"\xE8\xA1\xA8.csv --encoding 1252", "a\n", "", "a link with another name", 2},
        {"a.csv --add-bom --output-encoding 932", "a\n", "", "--output-encoding utf-8", 2},
    };
    Check(cases);
}

TEST_F(Convert, EverySampleToUtf8AndBack) {
    const std::string samples = TQC_SAMPLES "/";
    m_folder.WriteFile("key", "secret\r\n");
    const std::string lines[] = {
        "prices-sjis.csv --encoding 932",
        "prices-utf8.csv",
        "prices-locked.xtqf --password-file key --encoding 932",
        "stock.tsv",
        "prices.xlsx",
        "prices.xls",
#if defined(TQC_WITH_ENCRYPTION)
        "prices-locked.xlsx --password-file key",
#endif
#if defined(TQC_WITH_ACCESS)
        "stock.mdb",
        "stock.accdb",
#endif
        "ledger.txt --widths 6,20,10",
    };
    std::ifstream file(samples + "prices-sjis.csv", std::ios::binary);
    const std::string prices(std::istreambuf_iterator<char>(file), {});
    for (const std::string& line : lines) {
        ASSERT_EQ(Run(samples + line + " --output-encoding utf-8 --add-bom -o utf8.csv").errors, "") << line;
        const SResult back = Run("utf8.csv --output-encoding shift_jis");
        EXPECT_EQ(back.errors, "") << line;
        EXPECT_EQ(Run("utf8.csv --output-encoding utf-8 --add-bom").output, m_folder.ReadFile("utf8.csv")) << line;
        EXPECT_TRUE(!line.starts_with("prices") || back.output == prices) << line;
        // Under another name the result is the same.
        const std::string name = Words(line)[0];
        std::filesystem::copy(samples + name, m_folder.Path("other.csv"),
                              std::filesystem::copy_options::overwrite_existing);
        const std::string options = (name == "stock.tsv" ? " --type tsv " : " ") + line.substr(name.size());
        EXPECT_EQ(Run("other.csv --output-encoding utf-8 --add-bom" + options).output, m_folder.ReadFile("utf8.csv"))
            << line;
    }
}

TEST_F(Convert, FixedLengthText) {
    const std::string wide = std::string(13'000, 'x');
    const SCase cases[] = {
        {"a.txt --widths 2,1", BOM + "ab1\ncd2\n", "ab,1\r\ncd,2\r\n"},
        {"a.dat --widths 2,2", "ab1,\ncd2\t\n", "ab,\"1,\"\r\ncd,2 \r\n"},
        {"a.txt --widths 13000", Repeat(wide + "\n", 2), Repeat(wide + "\r\n", 2)},
        {"a.txt --widths 2,1", "ab1\ncd22\n", "ab,1\r\ncd,2\r\n", "row 2: text", 1},
        // A line longer than any row.
        {"a.txt --widths 2,1", "ab1\ncd2" + std::string(70'000, ' ') + "x\n", "ab,1\r\ncd,2\r\n", "row 2: text", 1},
        {"a.txt --widths 2,1", "ab\x1A\x63\x64\x32\n", "ab,\r\ncd,2\r\n", "row 1: ended by a SUB byte", 1},
        {"a.txt --widths 3,1 --max-field-size 2", "abc1\n", "ab,1\r\n", "field 1", 1},
        {"a.txt --widths 6,5 --max-line-size 10", "abc1\n", "", "--max-line-size", 6},
        {"a.txt", "abc1\n", "", "tqc preview a.txt", 5},
        {"a.csv --widths 1 --type csv", "a\n", "", "--type fix", 2},
        {"a.csv --widths 3,0", "a\n", "", "1 to 65535", 2},
        {"a.csv --widths 65000,600", "a\n", "", "at most 65534; it is 65602", 2},
        {"preview a.txt", "0123456789ab\r\nc\td\r\n\r\nnone\r\n", "        10\n123456789012\n0123456789ab\nc.d\n\n"},
        {"preview a.dat", BOM + "\xE8\xA1\xA8\x1B[\x7F\xC2\x9B|\n", "123456789\n\xE8\xA1\xA8 .[.. |\n"},
        {"preview a.csv", "a,\"b,c\"\n1,2\n3\n4\n", "a | b,c\n1 | 2\n3\n"},
        {"preview a.csv --max-line-size 4", "a\nbcdefg\n", "a\n", "row 2 has 4 bytes or more", 6},
    };
    Check(cases);
}

TEST_F(Convert, PackagesConvertLikeAnySource) {
    m_folder.WriteFile("a.xtqf", MakeZip({{.name = "TqData\\SourceFile.csv", .content = BOM + UTF8}}));
    EXPECT_EQ(Run("a.xtqf").output, UTF8_OUT);
    EXPECT_EQ(Run("preview a.xtqf --output-encoding 932").output, "\x95\x5C | a b | 1\n");
    // The code page of the data does not apply to the temporary folder's path, which it cannot even represent.
    for (const char* name : {"tmp/\xE8\xA1\xA8", "tmp/\xC3\xA9"}) {
        ::setenv("TMPDIR", m_folder.MakeFolder(name).c_str(), 1);
        EXPECT_EQ(Run("a.xtqf --code-page 932").output, SJIS_OUT) << name;
    }
    ::setenv("TMPDIR", m_folder.Path("tmp").c_str(), 1);
    EXPECT_THAT(Run("info a.xtqf").output,
                testing::AllOf(HasSubstr("Data file:     16 bytes"), HasSubstr("UTF-8 (BOM)")));
    EXPECT_THAT(Run("info " TQC_SAMPLES "/prices-locked.xtqf").output, HasSubstr("needs a password"));
    m_folder.WriteFile("key", "x");
    m_folder.WriteFile("other.xtqf", MakeZip({{.name = "other", .content = "x"}}));
    const SCase refused[] = {
        {"b.xtqf", "no archive", "", "b.xtqf: not a package", 5},
        {"b.xtqf --password-file key", "PK\3\4", "", "b.xtqf: cannot be unpacked: the package is damaged", 5},
        {TQC_SAMPLES "/prices-locked.xtqf", "", "", "needs a password; give it with --password-file", 4},
        {TQC_SAMPLES "/prices-locked.xtqf --password-file key", "", "", "unpacked: the password is wrong\n", 4},
#if defined(TQC_WITH_ENCRYPTION)
        {TQC_SAMPLES "/prices-locked.xlsx", "", "", "encrypted; it needs a password; give it with --password-file",
         4},
        {"list " TQC_SAMPLES "/prices-locked.xlsx --password-file key", "", "", "the password is wrong\n", 4},
#endif
        {"a.xtqf --password-file missing", "", "", "missing", 3},
        {"other.xtqf", "", "", "other.xtqf: the package does not contain TqData/SourceFile.csv", 5},
        {"list a.xtqf", "", "", "this is a package", 2},
    };
    Check(refused);
}

TEST_F(Convert, WorkbooksAreListedAndConverted) {
    SXlsxParts parts;
    parts.strRows =
        "<row><c><v>1</v></c><c "
        "t='inlineStr'><is><t>\xE8\xA1\xA8</t></is></c></row><row><c><v>0.30000000000000004</v></c></row>";
    parts.sheetNames = {"It's a.b!c", "Gr\xC3\x96 \xCE\xA3 \xD0\x81 \xEF\xBC\xB1", "2", "ab", "aB"}; // GrÖ Σ Ё Ｑ
    m_folder.WriteFile("a.xlsx", parts.File());
    SXlsxParts vast;
    vast.strRows = "<row><c><v>1</v></c></row><row r='6200'><c r='XFD6200'><v>2</v></c></row>";
    m_folder.WriteFile("vast.xlsx", vast.File());
    const std::string rows = "1,\xE8\xA1\xA8\r\n0.3,\r\n";
    const SCase cases[] = {
        {"list a.xlsx", "",
         "name\trows\tcolumns\nIt's a.b!c\t2\t2\n" + parts.sheetNames[1] + "\t2\t2\n2\t2\t2\nab\t2\t2\naB\t2\t2\n"},
        {"a.xlsx", "", rows},
        {"a.xlsx --sheet It's~a.b!c", "", rows},
        {"a.xlsx --header --sheet gR\xC3\xB6~\xCF\x82~\xD1\x91~\xEF\xBD\x91", "", rows},
        {"a.xlsx --sheet Ab", "", "", "several sheets match \"Ab\" if case is ignored: ab, aB", 3},
        {"a.xlsx --sheet \"\"", "", "", "a name, a pattern, or a number from 1", 2},
        {"a.xlsx --sheet 3 --skip 1", "", "0.3,\r\n"},
        {"a.xlsx --skip 1 --header --numbers full", "", "0.30000000000000004,\r\n"},
#if defined(TQC_WITH_ACCESS)
        {TQC_SAMPLES "/stock.accdb --sheet PLACES --columns 2,place --limit 1", "", "0,A-12\r\n"},
        {TQC_SAMPLES "/stock.accdb --skip 1", "", "", "which a table has not; try --skip-rows", 2},
        {TQC_SAMPLES "/stock.accdb --header --sheet PLACES --skip-rows 1", "", "Place,Locked\r\nB-02,-1\r\n"},
#endif
        {"preview a.xlsx", "", "1 | \xE8\xA1\xA8\n0.3 | \n"},
        {"a.xlsx --sheet Q5", "", "", "a.xlsx: no sheet \"Q5\"; sheets: It's a.b!c, ", 3},
        {"list a.csv", "a,b\n", "", "list is for workbooks and databases", 2},
        {"a.csv --sheet 1", "a,b\n", "", "--sheet is for workbooks and databases", 2},
        {"b.xlsx", "no workbook", "", "b.xlsx: ", 5},
        {"vast.xlsx --max-fields 16384 -o /dev/null", "", "",
         "nearly all cells are empty: the first 6104 rows have 100007936 fields and 1 bytes", 0},
        {"damaged.xlsx", "", "", "sheet \"It's a.b!c\" cannot be opened: xl/worksheets/sheet1.xml: it has", 5},
        {"long.xlsx --header", "", "", "long.xlsx: sheet \"Sheet1\" cannot be opened: row 1 holds more than", 6},
        {"list damaged.xlsx", "", "name\trows\tcolumns\nIt's a.b!c\t\t\n", "it has a DOCTYPE\n", 5},
        {"list partly.xlsx", "", "name\trows\tcolumns\nA??\t2\t2\nB\t\t\n", "a styleSheet; the others are listed", 5},
        {"list wide.xlsx", "", "name\trows\tcolumns\nSheet1\t1\t16384\n"},
        {"wide.xlsx", "", "x" + std::string(16'383, ',') + "x\r\n"},
        {"lines.xlsx", "", "\"l1\nl2\"\r\nx\r\n\"" + std::string(65'533, 'x') + "\n\n\"\r\na\r\ny\r\n",
         "row 3: field 1 has more than 65535 bytes, truncated; that is the maximum\ntqc: lines.xlsx: row 4: field 1 "
         "has",
         1},
    };
    parts.strWorkbookPart =
        "<workbook xmlns:r='" + std::string(officeNamespace) +
        "'><sheets><sheet name='A\xC2\x9B\xE2\x80\xAE' r:id='s'/><sheet name='B' r:id='t'/></sheets></workbook>";
    parts.strSheetMode = "/>" + parts.Relationship("t", "worksheet", "styles.xml") + "<Relationship Id='u'";
    m_folder.WriteFile("partly.xlsx", parts.File());
    parts.strWorkbookPart.clear();
    parts.sheetNames.resize(1);
    parts.strSheetPart = "<!DOCTYPE a>";
    m_folder.WriteFile("damaged.xlsx", parts.File());
    SXlsxParts other;
    other.strRows = "<row>" + Repeat("<c t='str'><v>" + Repeat("x", 1'000'000) + "</v></c>", 5) + "</row>";
    m_folder.WriteFile("long.xlsx", other.File());
    other.strRows = "<row><c r='A1' t='str'><v>x</v></c><c r='XFD1' t='str'><v>x</v></c></row>";
    m_folder.WriteFile("wide.xlsx", other.File());
    const std::string cell = "<row><c t='str'><v>", end = "</v></c></row>";
    other.strRows = cell + " l1\nl2 " + end + cell + Repeat(" ", 70'000) + "x" + end + cell + Repeat("x", 65'533) +
                    "\n\n\nx" + end + cell + "a" + Repeat(" ", 65'600) + "b" + end + cell + Repeat("\t", 70'000) +
                    "y" + end;
    m_folder.WriteFile("lines.xlsx", other.File());
    Check(cases);
}

} // namespace
} // namespace NSTQ::Tests
