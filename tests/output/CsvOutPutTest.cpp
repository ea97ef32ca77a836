#include "CCsvOutPut.h"
#include "platform/files/Files.h"
#include "support/CTextBeforeTheEnd.h"
#include "support/Chosen.h"
#include "support/Faults.h"
#include "support/TempFolder.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using namespace NSTQ;
using namespace NSTQ::NSTQCore;
using namespace NSTQ::Tests;

/// An empty field is given as null, and the last one is at `last`.
bool WriteRow(CCsvOutPut& writer, const std::vector<std::string>& fields, CTextBeforeTheEnd* last = nullptr) {
    std::vector<const char*> data;
    std::vector<WORD> lengths;
    for (const auto& field : fields) {
        const bool isLast = last != nullptr && &field == &fields.back();
        data.push_back(field.empty() ? nullptr : isLast ? last->Put(field) : field.data());
        lengths.push_back(static_cast<WORD>(field.size()));
    }
    return writer.WriteLineData(data.data(), lengths.data(), static_cast<DWORD>(data.size()));
}

/// Writes fields that stand in one text, each one byte after the one before.
bool WriteTogether(CCsvOutPut& writer, const char* text, const std::vector<std::string>& fields) {
    std::vector<const char*> data;
    std::vector<WORD> lengths;
    for (const auto& field : fields) {
        data.push_back(text);
        lengths.push_back(static_cast<WORD>(field.size()));
        text += field.size() + 1;
    }
    return writer.WriteLineData(data.data(), lengths.data(), static_cast<DWORD>(data.size()));
}

/// The expected text of a field, computed in a simple way.
std::string Expected(const std::string& field, char separator, const std::string& lineEnds = "") {
    if (field.find_first_of(std::string{'"', separator} + lineEnds) == std::string::npos)
        return field;
    std::string text = "\"";
    for (const char c : field)
        text += c == '"' ? std::string("\"\"") : std::string(1, c);
    return text + '"';
}

class CsvOutPut : public testing::Test {
protected:
    CTempFolder m_folder;
    CCsvOutPut m_writer;

    void SetUp() override { ASSERT_TRUE(m_writer.FileOpen(m_folder.Path("out.csv").c_str())); }
    std::string Written() {
        EXPECT_TRUE(m_writer.FileClose());
        return m_folder.ReadFile("out.csv");
    }
};

TEST_F(CsvOutPut, AllKernelsWriteTheSameWhereverTheBufferIsFlushed) {
    std::mt19937 random(20240229);
    CTextBeforeTheEnd last;
    for (const auto kernel : Kernels()) {
        const CKernel use(kernel);
        for (const char separator : {',', '\t', '"', '\0', '\x81', 'a'}) {
            ASSERT_TRUE(m_writer.FileOpen(m_folder.Path("out.csv").c_str()));
            m_writer.SetSeparator(separator);
            const char pre = std::array{'\r', '\x1F', 'b'}[random() % 3];
            m_writer.SetDelimiter(pre, '\n');
            const std::string lineEnds = random() % 3 == 0 ? "" : std::string("\r\n") + pre;
            m_writer.SetQuoteLineEnds(!lineEnds.empty());
            const std::string bytes = std::string("aab,\"\t \x81\r\n\x1F", 11) + separator + '\0';
            std::string expected;
            while (expected.size() < 300000) {
                std::vector<std::string> fields(random() % 9);
                const unsigned specials = random() % 3 == 0 ? 13 : 2;
                for (std::string& field : fields) {
                    field.resize(random() % (random() % 999 == 0 ? 65536 : random() % 16 == 0 ? 600 : 70));
                    std::ranges::generate(field, [&] { return bytes[random() % specials]; });
                }
                std::string together;
                for (const std::string& field : fields) {
                    together += field + (random() % 64 == 0 ? bytes[random() % bytes.size()] : '\0');
                    expected += (&field == fields.data() ? "" : std::string(1, separator)) +
                                Expected(field, separator, lineEnds);
                }
                expected += {pre, '\n'};
                together.append(random() % 100, 'a');
                ASSERT_TRUE(random() % 2 == 0 && together.size() <= CTextBeforeTheEnd::size
                                ? WriteTogether(m_writer, last.Put(together), fields)
                                : WriteRow(m_writer, fields, &last));
            }
            ASSERT_TRUE(Written() == expected) << Scan::GetKernel().name << ' ' << static_cast<int>(separator);
        }
    }
}

TEST_F(CsvOutPut, AllKernelsSplitTheSameShortTexts) {
    constexpr std::string_view alphabet("a,\"\r\0", 5);
    constexpr std::size_t size = 4, codes = 5 * 5 * 5 * 5;
    for (const auto kernel : Kernels()) {
        const CKernel use(kernel);
        ASSERT_TRUE(m_writer.FileOpen(m_folder.Path("out.csv").c_str()));
        m_writer.SetQuoteLineEnds(true);
        std::string expected;
        for (const std::size_t before : {0U, 13U, 29U, 61U})
            for (std::size_t code = 0; code < codes; ++code)
                // Each byte ends a field or is part of one, whatever it is.
                for (unsigned ends = 0; ends < 1U << size; ++ends) {
                    std::string text(before, 'a');
                    std::vector<std::string> fields{text};
                    for (std::size_t i = 0, rest = code; i < size; ++i, rest /= alphabet.size()) {
                        text += alphabet[rest % alphabet.size()];
                        if ((ends >> i & 1) != 0)
                            fields.emplace_back();
                        else
                            fields.back() += text.back();
                    }
                    for (const std::string& field : fields)
                        expected += (&field == fields.data() ? "" : ",") + Expected(field, ',', "\r\n");
                    expected += "\r\n";
                    ASSERT_TRUE(WriteTogether(m_writer, text.c_str(), fields));
                }
        ASSERT_TRUE(Written() == expected) << Scan::GetKernel().name;
    }
}

TEST_F(CsvOutPut, FieldsAroundAndAboveTheBufferSizeAreWritten) {
    std::string expected;
    for (const std::size_t size : {63997U, 63998U, 63999U, 64000U, 64001U, 65535U}) {
        const std::string text(size, 'h'), quotes(size, '"');
        EXPECT_EQ(m_writer.WriteHeaderData(text.data(), static_cast<WORD>(size)), size <= 63998) << size;
        EXPECT_TRUE(WriteRow(m_writer, {text, ","}) && WriteRow(m_writer, {quotes})) << size;
        expected += text + "\r\n" + text + ",\",\"\r\n" + Expected(quotes, ',') + "\r\n";
    }
    EXPECT_EQ(Written(), expected);
}

TEST_F(CsvOutPut, OpeningAnotherFileClosesTheFirstUnlessThePathIsInvalid) {
    EXPECT_TRUE(WriteRow(m_writer, {"a", " \x83,"}));
    EXPECT_FALSE(m_writer.FileOpen(m_folder.Path("..").c_str()) || m_writer.GetErrorCode() != 0);
    EXPECT_FALSE(CCsvOutPut().FileOpen(m_folder.Path("out.csv").c_str())) << "it is locked";
    EXPECT_FALSE(m_writer.FileOpen("relative.csv") || m_writer.GetErrorCode() != 3);
    EXPECT_TRUE(m_writer.WriteLineData(nullptr, nullptr, 0));
    m_folder.WriteFile("second.csv", "old content");
    EXPECT_TRUE(m_writer.FileOpen(m_folder.Path("second.csv").c_str()));
    EXPECT_EQ(m_folder.ReadFile("out.csv"), "a,\" \x83,\"\r\n\r\n");
    EXPECT_FALSE(m_writer.FileOpen(m_folder.Path("missing/out.csv").c_str()) || m_writer.GetErrorCode() != 3);
    EXPECT_EQ(m_folder.ReadFile("second.csv"), "");
    // Without a file, only the first flush fails.
    const std::string field(40000, 'x');
    EXPECT_TRUE(WriteRow(m_writer, {field}));
    EXPECT_FALSE(WriteRow(m_writer, {field}));
    EXPECT_EQ(m_writer.GetErrorCode(), Platform::ERROR_INVALID_HANDLE);
    EXPECT_TRUE(m_writer.FileOpen(m_folder.Path("out.csv").c_str()));
    EXPECT_EQ(Written(), "");
}

TEST_F(CsvOutPut, EveryFailedWriteIsReported) {
    const std::string field(30000, 'x');
    const auto failures = Faults::ForEachFailure(Faults::Call::Write, ENOSPC, [&](std::size_t n) {
        CCsvOutPut writer;
        EXPECT_TRUE(writer.FileOpen(m_folder.Path("full.csv").c_str()));
        bool written = true;
        for (int row = 0; row < 6; ++row)
            written &= WriteRow(writer, {field, "\"" + field});
        writer.FileClose();
        // The sixth write is done by FileClose, whose failure only the error code shows.
        EXPECT_EQ(writer.GetErrorCode(), n <= 6 ? Platform::ERROR_DISK_FULL : 0) << n;
        EXPECT_EQ(written, n >= 6) << n;
    });
    EXPECT_EQ(failures, 6U);
}

TEST_F(CsvOutPut, AFailedFlushKeepsTheFieldAndLosesTheRestOfTheRow) {
    EXPECT_TRUE(WriteRow(m_writer, {std::string(63990, 'x')}));
    {
        const Faults::Scope full(Faults::Call::Write, 1, ENOSPC);
        EXPECT_FALSE(WriteRow(m_writer, {"1234567890", "never"}));
    }
    EXPECT_TRUE(WriteRow(m_writer, {"next"}));
    EXPECT_EQ(Written(), "1234567890next\r\n");
}

} // namespace
