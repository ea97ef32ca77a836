// The preview and the reader of fixed-length text, against a plain reader of the same grammar.
#include "CFixDataAccess.h"
#include "support/Faults.h"
#include "support/Kernels.h"
#include "support/TempFolder.h"
#include "text/Harness.h"
#include "tqcAccess/CodePage.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <random>

namespace {

using namespace NSTQ;
using namespace NSTQ::NSTQCore;
using NSTQ::Tests::CTempFolder;
namespace Faults = NSTQ::Tests::Faults;

struct SLayout {
    std::vector<WORD> widths;
    bool lineEnds = true;
    char pre = '\r';
    char post = '\n';
    DWORD maxFields = 16;
    DWORD maxField = 255;
};

struct SRow {
    bool result = false;
    DWORD count = 0;
    std::vector<std::string> fields;
    bool hasNext = false;

    std::string Show() const {
        std::string text = (result ? "+" : "-") + std::to_string(count) + ':';
        for (const auto& field : fields)
            text += field + '|';
        return text + (hasNext ? " more" : " end");
    }
};

/// Reads records off a text in memory, one byte at a time.
class CPlainFixReader {
public:
    CPlainFixReader(const SLayout& layout, std::string_view text) : m_layout(layout), m_text(text) {}

    SRow Read() {
        SRow row;
        bool ended = false;
        for (const WORD width : m_layout.widths) {
            if (ended)
                break;
            const std::string field = ReadColumn(width, ended);
            if (row.count++ < m_layout.maxFields)
                row.fields.push_back(
                    field.substr(0, Platform::KeptTextLength(field.data(), field.size(), m_layout.maxField)));
        }
        row.result = true;
        if (row.fields.empty())
            row.result = m_pos == m_text.size() && m_touchedEnd;
        else if (m_layout.lineEnds && !ended)
            row.result = SkipLine();
        m_touchedEnd |= m_pos == m_text.size();
        row.hasNext = !m_touchedEnd && !m_text.empty();
        return row;
    }

private:
    bool TakeLineEnd() {
        if (m_layout.post == 0)
            return true;
        if (m_pos == m_text.size() || m_text[m_pos] != m_layout.post)
            return false;
        ++m_pos;
        return true;
    }

    std::string ReadColumn(WORD width, bool& ended) {
        std::string field;
        std::size_t kept = 0; // without trailing spaces
        for (WORD taken = 0; taken < width && m_pos < m_text.size(); ++taken) {
            const char c = m_text[m_pos++];
            if (static_cast<unsigned char>(c) > ' ') {
                kept = (field += c).size();
            } else if (c == m_layout.pre) {
                if (TakeLineEnd()) {
                    ended = true;
                    break;
                }
            } else if (c == '\x1A') {
                ended = true;
                break;
            } else if (!field.empty() && c == ' ') {
                field += ' ';
            } else if (!field.empty() && c == '\t') {
                kept = (field += ' ').size();
            }
        }
        return field.substr(0, kept);
    }

    bool SkipLine() {
        while (m_pos < m_text.size())
            if (m_text[m_pos++] == m_layout.pre && TakeLineEnd())
                return true;
        return true; // the end of the file ends the last line
    }

    SLayout m_layout;
    std::string_view m_text;
    std::size_t m_pos = 0;
    bool m_touchedEnd = false;
};

std::unique_ptr<CFixDataAccess> OpenReader(const SLayout& layout, const std::string& path, DWORD maxLine = 4096) {
    CSourceDataInfo info;
    info.SetDelimiter(layout.pre, layout.post);
    info.SetCommonInfo(path.c_str(), SCDeclareConstant::SFT_FIX);
    info.PrepareReadSourceData(false);
    info.SetFixColLen(layout.widths);
    EXPECT_EQ(info.GetIsExistFixCRLF(), layout.lineEnds);
    auto reader = std::make_unique<CFixDataAccess>(layout.maxFields, maxLine, layout.maxField, &info);
    reader->SetDelimiter(layout.pre, layout.post);
    return reader->FileOpen(&info) ? std::move(reader) : nullptr;
}

SRow ReadRow(CFixDataAccess& reader, const SLayout& layout) {
    const char** data = nullptr;
    const WORD* lengths = nullptr;
    SRow row;
    row.result = reader.GetLineData(data, lengths, row.count);
    for (DWORD i = 0; i < std::min(row.count, layout.maxFields); ++i) {
        row.fields.emplace_back(data[i], lengths[i]);
        EXPECT_EQ(data[i][lengths[i]], '\0');
    }
    row.hasNext = reader.HasNextLineData();
    return row;
}

void Compare(const SLayout& layout, const std::string& path, const std::string& text, const std::string& title) {
    const auto reader = OpenReader(layout, path);
    ASSERT_TRUE(reader) << title;
    CPlainFixReader plain(layout, text);
    for (bool last = false; !last;) {
        const SRow expected = plain.Read();
        const SRow actual = ReadRow(*reader, layout);
        ASSERT_EQ(actual.Show(), expected.Show()) << title << ": " << Tests::Escape(text);
        last = !expected.hasNext;
    }
}

TEST(FixPreview, HoldsTheFirstThreeRows) {
    const std::string longText(20000, 'x');
    const struct {
        const char* title;
        std::string text;
        char pre;
        char post;
        std::string preview;
        bool lineEnd;
    } cases[] = {
        {"three of four rows", "row\r\n\r\nc\r\nd", '\r', '\n', "row\r\n\r\nc\r\n", true},
        {"LF where CR LF is expected", "a\nb\nc\nd\n", '\r', '\n', "a\nb\nc\nd\n", false},
        {"lone CR, CR CR LF", "a\rb\r\r\nc\r", '\r', '\n', "a\rb\r\r\nc\r", true},
        {"a line end of one byte as the last byte", "a\r", '\r', '\0', "a\r", true},
        {"no line end", longText, '\r', '\n', longText.substr(0, 12288), false},
        {"empty", "", '\r', '\n', "", false},
        {"a NUL ends the text", std::string("a\0b\r\n", 5), '\r', '\n', "a", true},
    };
    const CTempFolder folder;
    for (const auto& c : cases) {
        CSourceDataInfo info;
        const char* data = nullptr;
        DWORD length = 77;
        info.SetDelimiter(c.pre, c.post);
        info.SetCommonInfo(folder.WriteFile("a.txt", c.text).c_str(), SCDeclareConstant::SFT_FIX);
        EXPECT_FALSE(info.GetFixFileData(data, length)) << c.title;
        EXPECT_EQ(length, 77U);
        EXPECT_EQ(info.PrepareReadSourceData(false), CSourceDataInfo::SDO_FIX_FILE) << c.title;
        ASSERT_TRUE(info.GetFixFileData(data, length)) << c.title;
        EXPECT_EQ(std::string(data, length), c.preview) << c.title;
        EXPECT_EQ(info.GetIsExistFixCRLF(), c.lineEnd) << c.title;

        const std::unique_ptr<CSourceDataInfo> clone(info.CreateClone());
        EXPECT_FALSE(clone->GetFixFileData(data, length)) << c.title;
        EXPECT_EQ(clone->GetIsExistFixCRLF(), c.lineEnd) << c.title;
    }
}

TEST(FixPreview, AFailureSaysWhy) {
    const CTempFolder folder;
    CSourceDataInfo info;
    info.SetCommonInfo(folder.WriteFile("a.txt", "abc").c_str(), SCDeclareConstant::SFT_FIX);
    const std::pair<int, CSourceDataInfo::ESourceDataOpen> cases[] = {
        {ENOENT, CSourceDataInfo::SDO_FILE_NOT_FOUND},
        {ENOTDIR, CSourceDataInfo::SDO_READ_ERROR},
        {EACCES, CSourceDataInfo::SDO_ACCESS_DENIED},
        {EWOULDBLOCK, CSourceDataInfo::SDO_SHARING_VIOLATION},
        {ENOSPC, CSourceDataInfo::SDO_DISK_FULL},
        {EIO, CSourceDataInfo::SDO_READ_ERROR},
        {ENAMETOOLONG, CSourceDataInfo::SDO_FILENAME_TOO_LONG},
    };
    const std::pair<Faults::Call, std::size_t> calls[] = {
        {Faults::Call::Open, 1}, {Faults::Call::Read, 1}, {Faults::Call::Read, 2}};
    for (const auto& [call, nth] : calls)
        for (const auto& [error, expected] : cases) {
            const Faults::Scope fault(call, nth, error);
            EXPECT_EQ(info.PrepareReadSourceData(false), expected) << error;
            const char* data = nullptr;
            DWORD length = 77;
            EXPECT_TRUE(info.GetFixFileData(data, length)) << error;
            EXPECT_EQ(length, 0U) << error;
        }
}

TEST(FixReader, SplitsAtTheWidths) {
    const struct {
        const char* title;
        SLayout layout;
        std::string text;
        const char* rows;
    } cases[] = {
        {"blanks around and inside", {{3, 3, 3}}, " A DE A B\r\n", "+3:A|DE|A B| end"},
        {"a line end inside a column", {{3, 3}}, "AB\r\nCDEFGH\r\n", "+1:AB| more +2:CDE|FGH| end"},
        {"without line ends", {{3, 3}, false}, "ABCDEFGHIJKL", "+2:ABC|DEF| more +2:GHI|JKL| end"},
        {"the last record lacks columns", {{2, 2, 2}}, "AB\r\nABC", "+2:AB|| more +3:AB|C|| end"},
        {"no columns", {{}}, "ABC\r\n", "-0: more -0: more"},
    };
    const CTempFolder folder;
    for (const auto& c : cases) {
        const auto reader = OpenReader(c.layout, folder.WriteFile("a.txt", c.text));
        ASSERT_TRUE(reader) << c.title;
        std::string rows = ReadRow(*reader, c.layout).Show();
        if (reader->HasNextLineData())
            rows += ' ' + ReadRow(*reader, c.layout).Show();
        EXPECT_EQ(rows, c.rows) << c.title;
    }
}

TEST(FixReader, AgreesWithThePlainReader) {
    const CTempFolder folder;
    std::mt19937 random(20261124);
    const auto kernels = Tests::Kernels();
    const std::string alphabet("ab \t\r\n\x1A\0\x83\x81", 10);
    for (int round = 0; round < (Tests::isSanitized ? 500 : 2500); ++round) {
        // Few blanks in every third text, so that rows also reach their last columns.
        const std::size_t letters = round % 3 == 0 ? alphabet.size() : 6;
        // Every second text has wide columns of plain text and spaces, which are what kernels take.
        const Tests::CKernel kernel(kernels[static_cast<std::size_t>(round / 2) % kernels.size()]);
        const bool isWide = round % 2 == 1;
        std::string text(random() % (round % 100 == 0 ? 130000 : isWide ? 900 : 60), '\0');
        for (char& c : text)
            c = random() % 8 < 5 ? 'x' : alphabet[random() % (!isWide || random() % 100 == 0 ? letters : 3)];
        SLayout layout{std::vector<WORD>(1 + random() % 4)};
        for (WORD& width : layout.widths)
            width = static_cast<WORD>(random() % (isWide ? 150 : 6));
        layout.widths[0] = static_cast<WORD>(layout.widths[0] + 1);
        layout.maxFields = static_cast<DWORD>(1 + random() % 4);
        layout.maxField = static_cast<DWORD>(1 + random() % (isWide ? 150 : 6));
        if (round % 4 == 1) {
            layout.pre = '\n';
            layout.post = '\0';
        }
        const std::string lineEnd = {layout.pre, layout.post};
        layout.lineEnds =
            text.substr(0, 12288).find(layout.post == 0 ? lineEnd.substr(0, 1) : lineEnd) != std::string::npos;
        Compare(layout, folder.WriteFile("a.txt", text), text, "round " + std::to_string(round));
        if (HasFatalFailure())
            return;
    }
}

TEST(FixReader, ColumnsMustFitTheLineBuffer) {
    const CTempFolder folder;
    const std::string path = folder.WriteFile("a.txt", std::string(200, 'x') + "\r\n");
    const struct {
        std::vector<WORD> widths;
        DWORD maxLine;
        bool fits;
    } cases[] = {
        {{5, 4}, 10, true},     {{5, 5}, 10, false},         {{11}, 10, false}, {std::vector<WORD>(11), 10, true},
        {{65535}, 65535, true}, {{65535, 0}, 100000, false}, {{}, 0, true},     {std::vector<WORD>(12), 10, false},
    };
    for (const auto& c : cases) {
        const auto title = std::to_string(c.widths.size()) + " columns, line " + std::to_string(c.maxLine);
        CSourceDataInfo info;
        info.SetCommonInfo(path.c_str(), SCDeclareConstant::SFT_FIX);
        info.SetFixColLen(c.widths);
        CFixDataAccess reader(4, c.maxLine, 255, &info);
        EXPECT_EQ(reader.FileOpen(&info), c.fits) << title;
        EXPECT_EQ(reader.GetErrorCode(), c.fits ? 0U : 87U) << title;
        // Reading all the same stays inside the buffers, which the sanitizers watch.
        const char** data = nullptr;
        const WORD* lengths = nullptr;
        DWORD count = 0;
        EXPECT_EQ(reader.GetLineData(data, lengths, count) && count > 0, c.fits && !c.widths.empty()) << title;
    }
}

TEST(FixReader, RowsAllocateNothing) {
    const CTempFolder folder;
    std::string text;
    while (text.size() < 200000)
        text += "abc defg\r\n";
    const SLayout layout{{4, 4}};
    const auto reader = OpenReader(layout, folder.WriteFile("a.txt", text));
    const char** data = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0, rows = 0;
    const Faults::Scope allocations(Faults::Call::Allocate, ~std::size_t{0}, 0);
    while (reader->HasNextLineData() && reader->GetLineData(data, lengths, count))
        ++rows;
    EXPECT_EQ(allocations.Calls(), 0U);
    EXPECT_EQ(rows, 20000U);
}

} // namespace
