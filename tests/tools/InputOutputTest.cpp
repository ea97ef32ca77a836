// tqc on several inputs, standard input, rejected rows, and what it says to programs.
#include "support/TempFolder.h"
#include "support/ZipWriter.h"
#include "tools/CProgram.h"
#include "xlsx/XlsxBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <set>

namespace NSTQ::Tests {
namespace {

using testing::HasSubstr;

const std::string BOM = "\xEF\xBB\xBF";

/// Each run has these files in its folder, and "tmp", the temporary folder, which is empty in the end.
class InputOutput : public testing::Test {
protected:
    void SetUp() override {
        ::setenv("TMPDIR", m_folder.MakeFolder("tmp").c_str(), 1);
        m_folder.WriteFile("a.csv", "n,v\n1,=1+2\n2,-12.5\n");
        m_folder.WriteFile("b.csv", "n,v\n3,x\n");
        m_folder.WriteFile("other.csv", "n,w\n4,y\n");
        m_folder.WriteFile("wide.csv", "p,q,r\n");
        m_folder.WriteFile("a.tsv", "t\tu\n");
        m_folder.WriteFile("bad.csv", BOM + "a,b\r\nc,\"d\"\",\",e\r\nf,g\r\nh,i,j\r\n");
        m_folder.WriteFile("long.csv", "a\n" + std::string(70'000, 'x') + "\nb\n");
        m_folder.WriteFile("fix.txt", "ab1\ncd2!\nef3\n");
        m_folder.WriteFile("euro.csv", "a,\xE2\x82\xAC\nb,c\n");
        m_folder.WriteFile("z.xtqf", MakeZip({{.name = "TqData\\SourceFile.csv", .content = "k,l\nm,n,o\n"}}));
        SXlsxParts parts;
        parts.strRows = "<row><c t='inlineStr'><is><t>say \"x, y\"</t></is></c><c><v>-1</v></c></row>";
        parts.sheetNames = {"Q 1", "Q\xE2\x82\xAC", "It's"};
        m_folder.WriteFile("book.xlsx", parts.File());
        m_folder.WriteFile("book.dat", parts.File());
    }
    void TearDown() override {
        ::unsetenv("TMPDIR");
        // The library keeps the folder that its unpacking goes below.
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder.Path("tmp")))
            EXPECT_TRUE(entry.is_directory() && entry.path().string().find("TQD") == std::string::npos)
                << entry.path();
    }
    SResult Run(const std::vector<std::string>& arguments, const std::string& input = "") {
        const int file = ::open(input.empty() ? "/dev/null" : m_folder.Path(input).c_str(), O_RDONLY | O_CLOEXEC);
        const SResult result = CProgram(arguments, {m_folder.Path(), -1, -1, "C.UTF-8", file}).Finish();
        ::close(file);
        return result;
    }
    std::set<std::string> Names() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder.Path()))
            if (const auto name = entry.path().string().substr(m_folder.Path().size() + 1); !name.starts_with("tmp"))
                names.insert(name);
        return names;
    }

    CTempFolder m_folder;
};

TEST_F(InputOutput, WritesWhatItShouldAndNothingElse) {
    const std::string head = "row,offset,cause,record,file\r\n";
    const std::string book = "\"say \"\"x, y\"\"\",-1\r\n";
    const struct {
        std::vector<std::string> arguments;
        std::string input; ///< the file that is standard input
        int status;
        std::string output;
        const char* errors;                                    ///< a part of standard error; nothing when empty
        std::vector<std::pair<std::string, std::string>> made; ///< new files and their contents
    } cases[] = {
        // Several inputs into one output.
        {{"a.csv", "b.csv"}, "", 0, "n,v\r\n1,=1+2\r\n2,-12.5\r\nn,v\r\n3,x\r\n", "", {}},
        {{"convert", "a.csv", "b.csv", "--header", "--skip", "1", "-o", "o"},
         "",
         0,
         "",
         "",
         {{"o", "n,v\r\n2,-12.5\r\n"}}},
        {{"book.xlsx", "book.xlsx", "--header"}, "", 0, "F1,F2\r\n" + book + book, "", {}},
        {{"a.csv", "other.csv", "--header", "-o", "o"}, "", 5, "", "its column 2 is \"w\", that of a.csv \"v\"", {}},
        {{"a.csv", "wide.csv", "-o", "o"}, "", 5, "", "wide.csv: its first row has 3 fields, that of a.csv 2", {}},
        {{"a.csv", "b.csv", "no.csv"}, "", 3, "", "no.csv: No such file", {}},
        {{"a.csv", "b.csv", "-o", "./b.csv"}, "", 2, "", "would replace the input b.csv", {}},
        // One output each.
        {{"b.csv", "a.tsv", "--out-dir", "x/y"},
         "",
         0,
         "",
         "",
         {{"x", ""}, {"x/y", ""}, {"x/y/b.csv", "n,v\r\n3,x\r\n"}, {"x/y/a.csv", "t,u\r\n"}}},
        {{"b.csv", "no.csv", "wide.csv", "--out-dir", "x"},
         "",
         3,
         "",
         "no.csv: No such file",
         {{"x", ""}, {"x/b.csv", "n,v\r\n3,x\r\n"}, {"x/wide.csv", "p,q,r\r\n"}}},
        {{"b.csv", "a.csv", "a.tsv", "--out-dir", "x"}, "", 2, "", "x/a.csv: the output of both a.csv and a.tsv", {}},
        {{"a.tsv", "a.csv", "--out-dir", "."}, "", 2, "", "would replace the input a.csv", {}},
        {{"a.csv", "-o", "o", "--out-dir", "x"}, "", 2, "", "exclude each other", {}},
        // Standard input.
        {{"-", "--type", "csv"}, "b.csv", 0, "n,v\r\n3,x\r\n", "", {}},
        {{"-", "--widths", "2,1"},
         "fix.txt",
         1,
         "ab,1\r\ncd,2\r\nef,3\r\n",
         "-: row 2: text behind the last column, left out",
         {}},
        {{"b.csv", "-", "--type", "csv", "--out-dir", "x"},
         "a.tsv",
         0,
         "",
         "",
         {{"x", ""}, {"x/b.csv", "n,v\r\n3,x\r\n"}, {"x/stdin.csv", "t u\r\n"}}},
        {{"-", "--type", "xlsx", "--sheet", "It's"}, "book.xlsx", 0, book, "", {}},
        {{"-", "--type", "xtqf", "--max-fields", "2"},
         "z.xtqf",
         1,
         "k,l\r\nm,n\r\n",
         "-: row 2: more than 2 fields",
         {}},
        {{"-", "--type", "xlsx"}, "b.csv", 5, "", "tqc: -: neither a workbook", {}},
        {{"-"}, "b.csv", 2, "", "give --type: csv, tsv, fix, xls, xlsx, mdb, accdb, xtqf", {}},
        {{"-", "-", "--type", "csv"}, "b.csv", 2, "", "only once", {}},
        {{"book.dat", "--type", "xlsx"}, "", 0, book, "", {}},
        {{"list", "-", "--type", "xlsx", "--names"}, "book.xlsx", 0, "Q 1\nQ\xE2\x82\xAC\nIt's\n", "", {}},
        // Rows that cannot be taken whole.
        {{"bad.csv", "--max-fields", "2", "--rejects", "r"},
         "",
         1,
         "a,b\r\nf,g\r\n",
         "bad.csv: row 2: rejected: more than 2 fields; try",
         {{"r", head + "2,8,\"more than 2 fields\",\"c,\"\"d\"\"\"\",\"\",e\",\"bad.csv\"\r\n4,25,\"more than 2 "
                       "fields\",\"h,i,j\",\"bad.csv\"\r\n"}}},
        {{"bad.csv", "--max-fields", "2", "--on-error", "skip", "--quiet", "--limit", "2"},
         "",
         1,
         "a,b\r\nf,g\r\n",
         "",
         {}},
        {{"bad.csv", "--max-fields", "2", "--on-error", "stop", "-o", "o"},
         "",
         6,
         "",
         "row 2: more than 2 fields",
         {}},
        {{"fix.txt", "b.csv", "--widths", "2,1", "--out-dir", "x", "--rejects", "r"},
         "",
         1,
         "",
         "fix.txt: row 2: rejected: text",
         {{"x", ""},
          {"x/fix.csv", "ab,1\r\nef,3\r\n"},
          {"x/b.csv", "\"n,\",v\r\n\"3,\",x\r\n"},
          {"r", head + "2,4,\"text behind the last column\",\"cd2!\",\"fix.txt\"\r\n"}}},
        {{"long.csv", "--rejects", "r"},
         "",
         1,
         "a\r\nb\r\n",
         "row 2: rejected: 65535 bytes or more",
         {{"r", head + "2,2,\"65535 bytes or more\",\"" + std::string(70'000, 'x') + "\",\"long.csv\"\r\n"}}},
        {{"z.xtqf", "--max-fields", "2", "--rejects", "r"},
         "",
         1,
         "k,l\r\n",
         "row 2: rejected",
         {{"r", head + "2,4,\"more than 2 fields\",\"m,n,o\",\"z.xtqf\"\r\n"}}},
        {{"book.xlsx", "--max-field-size", "3", "--rejects", "r"},
         "",
         1,
         "",
         "row 1: rejected: field 1 has 10 bytes",
         {{"r", head + "1,,\"field 1 has 10 bytes\",\"\"\"say \"\"\"\"x, y\"\"\"\"\"\",-1\",\"book.xlsx\"\r\n"}}},
        {{"euro.csv", "--output-encoding", "932", "--strict", "--rejects", "r"},
         "",
         1,
         "b,c\r\n",
         "row 1: rejected: characters",
         {{"r", head + "1,0,\"characters that 932 (shift_jis) does not have\",\"a,\xE2\x82\xAC\",\"euro.csv\"\r\n"}}},
        {{"euro.csv", "--header", "--output-encoding", "932", "--strict", "--on-error", "skip"},
         "",
         5,
         "",
         "row 1: characters",
         {}},
        {{"b.csv", "--rejects", "r"}, "", 0, "n,v\r\n3,x\r\n", "", {{"r", head}}},
        {{"b.csv", "--rejects", "b.csv"}, "", 2, "", "is an input or the output as well", {}},
        {{"b.csv", "--rejects", "o", "-o", "o"}, "", 2, "", "is an input or the output as well", {}},
        {{"b.csv", "--rejects", "r", "--on-error", "stop"}, "", 2, "", "--on-error skip", {}},
        {{"b.csv", "--rejects", "-"}, "", 2, "", "both be standard output", {}},
        // What is asked in the wrong place.
        {{"list", "a.csv", "b.csv"}, "", 2, "", "one file at a time", {}},
        {{"a.csv", "info"}, "", 2, "", "tqc info a.csv", {}},
        {{"a.csv", "--json"}, "", 2, "", "--json", {}},
    };
    const std::set<std::string> before = Names();
    for (const auto& entry : cases) {
        SCOPED_TRACE(testing::PrintToString(entry.arguments));
        const SResult result = Run(entry.arguments, entry.input);
        EXPECT_EQ(result.status, entry.status);
        EXPECT_EQ(result.output, entry.output);
        EXPECT_TRUE(*entry.errors != '\0' || result.errors.empty()) << result.errors;
        EXPECT_THAT(result.errors, HasSubstr(entry.errors));
        std::set<std::string> after = before;
        for (const auto& [name, content] : entry.made) {
            after.insert(name);
            const bool isFolder = std::filesystem::is_directory(m_folder.Path(name));
            EXPECT_EQ(isFolder ? "" : m_folder.ReadFile(name), content) << name;
        }
        EXPECT_EQ(Names(), after);
        for (const auto& [name, content] : entry.made)
            std::filesystem::remove_all(m_folder.Path(name));
    }
}

TEST_F(InputOutput, GuardsFormulasButNotNumbers) {
    const std::pair<std::string, std::string> cases[] = {
        {"=1+2", "'=1+2"},     {"@x", "'@x"},          {"+81-3", "'+81-3"}, {"-", "'-"},    {"-1e", "'-1e"},
        {"-12.5", "-12.5"},    {"+1,5e-7", "+1,5e-7"}, {"-.5E3", "-.5E3"},  {"a=b", "a=b"}, {"", ""},
        {"-1-2", "'-1-2"},     {"'=x", "'=x"},         {"\"\t=\"", "' ="},  {"-,", "'-,"},  {"1=", "1="},
        {"\xEF\xBC\x9D", "'="}}; // a fullwidth sign that the page has in its plain form only
    for (const auto& [field, guarded] : cases) {
        m_folder.WriteFile("f.dat", field + ";x\n" + field + ";x\n");
        const SResult result = Run({"f.dat", "--separator", ";", "--output-separator", "|", "--formula-guard",
                                    "--header", "--output-encoding", "1252", "--quiet"});
        EXPECT_EQ(result.output, guarded + "|x\r\n" + guarded + "|x\r\n") << field;
    }
    m_folder.WriteFile("f.csv", "=" + std::string(65'533, 'x') + "\n");
    EXPECT_EQ(Run({"f.csv", "--formula-guard"}).output.size(), 65'537U);
}

TEST_F(InputOutput, TellsProgramsInJson) {
    EXPECT_EQ(Run({"list", "book.xlsx", "--json", "--code-page", "932"}).output,
              "{\n  \"file\": \"book.xlsx\",\n  \"type\": \"xlsx\",\n  \"tables\": [\n"
              "    {\n      \"name\": \"Q 1\",\n      \"rows\": 1,\n      \"columns\": 2\n    },\n"
              "    {\n      \"name\": \"Q\xE2\x82\xAC\",\n      \"rows\": 1,\n      \"columns\": 2\n    },\n"
              "    {\n      \"name\": \"It's\",\n      \"rows\": 1,\n      \"columns\": 2\n    }\n  ]\n}\n");
    const auto info = [this](const char* name) {
        return std::regex_replace(Run({"info", name, "--json"}).output,
                                  std::regex("\"20[0-9]{2}-[0-9]{2}-[0-9]{2}T[0-9:]{8}[+-][0-9]{4}\""), "TIME");
    };
    EXPECT_EQ(info("bad.csv"), "{\n  \"file\": \"bad.csv\",\n  \"type\": \"csv\",\n"
                               "  \"description\": \"comma-separated text\",\n  \"size\": 32,\n  \"updated\": TIME,\n"
                               "  \"characterSet\": \"utf-8\",\n  \"mark\": true,\n  \"lineEnd\": \"crlf\"\n}\n");
    // Neither its name nor its content is UTF-8, nor is it clear what it is.
    m_folder.WriteFile("\"\x1F\xFF.q", "\xFF\n");
    EXPECT_EQ(info("\"\x1F\xFF.q"), "{\n  \"file\": \"\\\"\\u001F\xEF\xBF\xBD.q\",\n  \"type\": null,\n"
                                    "  \"description\": \"unknown\",\n  \"size\": 2,\n  \"updated\": TIME,\n"
                                    "  \"characterSet\": null,\n  \"mark\": false,\n  \"lineEnd\": \"lf\"\n}\n");
    EXPECT_THAT(info("z.xtqf"), testing::AllOf(HasSubstr("\"dataFileSize\": 10,"), HasSubstr("\"lineEnd\": \"lf\"")));
}

/// Starts the shell's function as the shell would, with the words of a line.
TEST_F(InputOutput, CompletesInBash) {
    const struct {
        std::vector<std::string> words; ///< as they are typed
        std::string completions;
    } cases[] = {
        {{"tqc", "book.xlsx", "--sheet", ""}, "Q\\ 1\nQ\xE2\x82\xAC\nIt\\'s\n"},
        {{"tqc", "-o", "a.csv", "./book.xlsx", "--sheet", "=", "It"}, "It\\'s\n"},
        {{"tqc", "preview", "book.xlsx", "--sheet", "\"Q "}, "Q 1\n"},
        {{"tqc", "--type", "xlsx", "book.dat", "--sheet", "Q\\ "}, "Q\\ 1\n"},
        {{"tqc", "a.csv", "--sheet", ""}, ""},
        {{"tqc", "--type", "x"}, "xls\nxlsx\nxtqf\n"},
        {{"tqc", "info", "a.csv", "--js"}, "--json\n"},
        {{"tqc", "a.csv", "--out"}, "--output\n--out-dir\n--output-separator\n--output-eol\n--output-encoding\n"},
        {{"tqc", "l"}, "list\nlong.csv\n"},
        {{"tqc", "a.csv", "--out-dir", "t"}, "tmp\n"},
        {{"tqc", "--max-fields", "2", "fix"}, "fix.txt\n"},
    };
    for (const auto& entry : cases) {
        std::string script = "PATH=$(dirname " TQC_PROGRAM "):$PATH; . " TQC_COMPLETIONS "/tqc.bash\nCOMP_WORDS=(";
        for (const std::string& word : entry.words)
            script += " $'" + std::regex_replace(word, std::regex(R"(\\)"), R"(\\\\)") + "'";
        script += ")\nCOMP_CWORD=" + std::to_string(entry.words.size() - 1);
        script += "\n_tqc\nprintf '%s\\n' \"${COMPREPLY[@]}\" | sed '/^$/d' >completions\n";
        m_folder.WriteFile("script", script);
        ASSERT_EQ(std::system(("cd " + m_folder.Path() + " && LC_ALL=C.UTF-8 bash script").c_str()), 0);
        EXPECT_EQ(m_folder.ReadFile("completions"), entry.completions) << testing::PrintToString(entry.words);
    }
}

TEST_F(InputOutput, TheManualAndTheCompletionsKnowEveryOption) {
    std::set<std::string> options;
    const std::string help = Run({"--help"}).output + Run({"list", "--help"}).output;
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
    EXPECT_EQ(Run({"--version"}).output.substr(0, 4), "tqc ");
    for (const char* command : {"convert", "info", "preview", "list"})
        EXPECT_THAT(Run({command, "--help"}).output, HasSubstr("Examples:\n  tqc " + std::string(command)))
            << command;
}

} // namespace
} // namespace NSTQ::Tests
