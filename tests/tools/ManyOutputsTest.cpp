// tqc into a folder: every sheet or table, patterns of --sheet, and the names of the files.
#include "tools/CToolTest.h"
#include "xlsx/XlsxBuilder.h"

#include <sys/stat.h>

#include <chrono>
#include <thread>

namespace NSTQ::Tests {
namespace {

class ManyOutputs : public CToolTest {
protected:
    void SetUp() override {
        CToolTest::SetUp();
        SXlsxParts parts;
        parts.strRows = "<row><c><v>7</v></c><c><v>8</v></c></row>";
        parts.sheetNames = {"Q1", "q2", "Rest", "It's"};
        m_folder.WriteFile("book.xlsx", parts.File());
        m_folder.WriteFile("book.dat", parts.File());
        m_folder.WriteFile("book.csv", "a,b\n");
        // Its second sheet cannot be opened.
        parts.strWorkbookPart = "<workbook xmlns:r='" + std::string(officeNamespace) +
                                "'><sheets><sheet name='A' r:id='s'/><sheet name='B' r:id='t'/><sheet name='C' "
                                "r:id='s'/></sheets></workbook>";
        parts.strSheetMode = "/>" + parts.Relationship("t", "worksheet", "styles.xml") + "<Relationship Id='u'";
        m_folder.WriteFile("partly.xlsx", parts.File());
    }

    void WriteBook(const std::string& name, std::vector<std::string> sheets) const {
        SXlsxParts parts;
        parts.sheetNames = std::move(sheets);
        m_folder.WriteFile(name, parts.File());
    }
};

TEST_F(ManyOutputs, WritesWhatIsSelectedToFilesOfItsName) {
    const std::string row = "{7,8\r\n}";
    const SCase cases[] = {
        {"book.xlsx --all --out-dir x", "", "", "", 0,
         "x/It's.csv" + row + "x/Q1.csv" + row + "x/Rest.csv" + row + "x/q2.csv" + row},
        {"book.xlsx --sheet q? --out-dir x", "", "", "", 0, "x/Q1.csv" + row + "x/q2.csv" + row},
        {"book.xlsx --sheet *'* --out-dir x", "", "", "", 0, "x/It's.csv" + row},
        {"book.xlsx --sheet Q1 --out-dir x", "", "", "", 0, "x/book.csv" + row},
        {"book.xlsx --sheet *t*'?*", "", "7,8\r\n"},
        {"book.xlsx --sheet *q", "", "", "book.xlsx: no sheet matches \"*q\"; sheets: Q1, q2, Rest, It's (see", 3},
        {"book.xlsx --sheet Q*", "", "", "book.xlsx: several sheets match \"Q*\": Q1, q2; add --out-dir", 3},
        {"preview book.xlsx --sheet Q*", "", "", "Q1, q2; give one name", 3},
        // One failure among others.
        {"partly.xlsx --all --out-dir x", "", "", "partly.xlsx: sheet \"B\" cannot be opened: ", 5,
         "x/A.csv" + row + "x/C.csv" + row},
        // Several inputs: texts have files, the others folders, and what an input is its bytes tell.
        {"book.xlsx book.csv book.dat --sheet Q1* --out-dir x --quiet", "", "", "book.csv: --sheet is for workbooks",
         2, "x/book (3)/Q1.csv" + row + "x/book/Q1.csv" + row},
        {"book.csv partly.xlsx --all --out-dir x", "", "", "sheet \"B\" cannot be opened", 5,
         "x/book.csv{a,b\r\n}x/partly/A.csv" + row + "x/partly/C.csv" + row},
        {"- book.csv --type xlsx --all --out-dir x <book.xlsx", "", "", "book.csv: ", 5,
         "x/stdin/It's.csv" + row + "x/stdin/Q1.csv" + row + "x/stdin/Rest.csv" + row + "x/stdin/q2.csv" + row},
        // Rows that are rejected name their sheet.
        {"book.xlsx --sheet Q1* --max-fields 1 --out-dir x --rejects r --quiet", "", "", "", 1,
         "r{row,offset,cause,record,file,table\r\n1,,\"more than 1 fields\",\"7,8\",\"book.xlsx\",\"Q1\"\r\n}"
         "x/Q1.csv{}"},
        {"book.xlsx --sheet Q1* --max-fields 1 --out-dir x", "", "", "book.xlsx: sheet \"Q1\": row 1: more than", 1,
         "x/Q1.csv{7\r\n}"},
        {"book.xlsx --sheet Q1* --out-dir x --rejects x/Q1.csv", "", "", "is also the output of book.xlsx: sheet", 2,
         "x/"},
        {"book.xlsx --all", "", "", "give the folder for them: --out-dir DIR", 2},
        {"book.xlsx --all --sheet 1 --out-dir x", "", "", "exclude each other", 2},
        {"list book.xlsx --all", "", "", "--all is an option of convert", 2},
    };
    Check(cases);
}

TEST_F(ManyOutputs, NamesOfFilesAreValidEverywhereAndUnique) {
    const std::string tooLong = Repeat("\xE8\xA1\xA8", 84); // with ".csv" it has 256 bytes
    WriteBook("names.xlsx", {"a/b", "a_b", "A_B", "..", "/etc", "C:\\x|y", " x. ", "nul", "Com1.x", "com10",
                             "q?\xC2\x9B*", "&lt;&quot;>", "\xE2\x80\xAEvsc", "\xD0\x96", "\xD0\xB6"});
    m_folder.WriteFile(tooLong, "a,b\n");
    const std::vector<std::string> files = {
        "A_B (3).csv", "C__x_y.csv",   "_Com1.x.csv",      "__.csv",
        "___.csv",     "_etc.csv",     "_nul.csv",         "_vsc.csv",
        "_x__.csv",    "a_b (2).csv",  "a_b.csv",          "com10.csv",
        "q___.csv",    "\xD0\x96.csv", "\xD0\xB6 (2).csv", tooLong.substr(3) + ".csv"};
    const auto before = Names();
    const SResult result = Run("names.xlsx --all --out-dir x");
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(std::ranges::count(result.errors, '\n'), 12) << result.errors;
    EXPECT_THAT(result.errors, testing::HasSubstr("tqc: names.xlsx: sheet \"/etc\": written to x/_etc.csv: its own"));
    EXPECT_THAT(Run(tooLong + " --all --out-dir x").errors, testing::HasSubstr("x/" + tooLong.substr(3) + ".csv:"));
    std::vector<std::string> made;
    for (const std::string& name : Names())
        if (name.starts_with("x/"))
            made.push_back(name.substr(2));
    EXPECT_EQ(made, files);
    EXPECT_EQ(Names().size(), before.size() + files.size()) << "a file outside of the folder";
    // The file of a sheet has the same name whichever are selected.
    Run("names.xlsx --sheet A/* --out-dir y");
    EXPECT_TRUE(m_folder.Exists("y/a_b (2).csv"));
}

TEST_F(ManyOutputs, LinksAtTheTargetsLeadToNoInputAndNoOtherOutput) {
    m_folder.MakeFolder("x");
    std::filesystem::create_symlink("../book.xlsx", m_folder.Path("x/Q1.csv"));
    std::filesystem::create_symlink("Rest.csv", m_folder.Path("x/It's.csv"));
    const std::string book = m_folder.ReadFile("book.xlsx");
    const SResult result = Run("book.xlsx --all --out-dir x");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.errors, "tqc: x/Q1.csv: the output would replace the input book.xlsx; try another output\n"
                             "tqc: x/It's.csv: would be the output of both book.xlsx: sheet \"Rest\" and book.xlsx: "
                             "sheet \"It's\"; convert them separately\n");
    EXPECT_EQ(m_folder.ReadFile("book.xlsx"), book);
    EXPECT_EQ(m_folder.ReadFile("x/Rest.csv"), "7,8\r\n");
}

TEST_F(ManyOutputs, SeveralJobsGiveTheSameAsOne) {
    const std::string samples = TQC_SAMPLES "/";
    m_folder.WriteFile("key", "secret\n");
    m_folder.WriteFile("long.csv", Repeat("1,2,3\n", 50'000));
    m_folder.WriteFile("damaged.xlsx", "PK\3\4");
    std::string inputs = "long.csv book.csv damaged.xlsx missing.csv partly.xlsx -";
    for (const char* sample : {"prices.xls", "prices-sjis.csv", "stock.accdb", "prices-locked.xtqf",
                               "prices-locked.xlsx", "stock-locked.accdb", "prices-utf8.csv"})
        inputs += " " + samples + sample;
    const auto run = [&](const std::string& options) {
        const SResult result = Run(inputs + " --all --max-fields 2 --password-file key --out-dir x" + options +
                                   " --separator , <book.csv");
        std::string all = std::to_string(result.status) + result.errors;
        for (const std::string& name : Names())
            if (name.starts_with("x/"))
                all += name + '{' + m_folder.ReadFile(name) + '}';
        std::filesystem::remove_all(m_folder.Path("x"));
        return all;
    };
    const std::string one = run("");
    EXPECT_THAT(one, testing::HasSubstr("long.csv: 49990 more rows"));
    for (const char* jobs : {" --jobs 1", " --jobs 2", " --jobs 7", " --jobs auto"})
        EXPECT_EQ(run(jobs), one) << jobs;
}

TEST_F(ManyOutputs, JobsThatCannotBeDone) {
    m_folder.MakeFolder("y/q.csv");
    for (const char* name : {"p.csv", "q.csv", "r.csv"})
        m_folder.WriteFile(name, "a,b\n");
    const SCase cases[] = {
        {"p.csv --jobs 2", "", "", "add --out-dir DIR", 2},
        {"p.csv --jobs 257 --out-dir x", "", "", "0 to 256", 2},
        {"p.csv q.csv --jobs 2 --out-dir x --rejects r", "", "", "leave out --jobs", 2},
        {"q.csv --jobs 2 --out-dir y", "", "", "y/q.csv: is a folder", 7},
    };
    Check(cases);
    // An output that cannot be written ends everything.
    const SResult result = Run("q.csv p.csv r.csv --jobs 2 --out-dir y");
    EXPECT_EQ(result.status, 7);
    EXPECT_EQ(result.errors, "tqc: y/q.csv: is a folder; give the name of a file in it\n");
}

/// TearDown checks that the temporary folder is empty.
TEST_F(ManyOutputs, ASignalRemovesTheTemporaryFilesOfAllJobs) {
    int pipes[3];
    std::vector<std::string> arguments;
    for (int& pipe : pipes) {
        arguments.push_back(std::string(1, static_cast<char>('p' + (&pipe - pipes))) + ".xlsx");
        ASSERT_EQ(::mkfifo(m_folder.Path(arguments.back()).c_str(), 0600), 0);
        pipe = ::open(m_folder.Path(arguments.back()).c_str(), O_RDWR | O_CLOEXEC);
    }
    for (const char* word : {"--jobs", "3", "--out-dir", "x"})
        arguments.emplace_back(word);
    CProgram program(arguments, {.folder = m_folder.Path()});
    const auto count = [this] {
        const std::filesystem::directory_iterator files(m_folder.Path("tmp"));
        return std::distance(begin(files), end(files));
    };
    for (int wait = 0; wait < 1000 && count() < 3; ++wait)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(count(), 3);
    ::kill(program.Id(), SIGTERM);
    EXPECT_EQ(program.Finish().status, -SIGTERM);
    for (const int pipe : pipes)
        ::close(pipe);
}

} // namespace
} // namespace NSTQ::Tests
