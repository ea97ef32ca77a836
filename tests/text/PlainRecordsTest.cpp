// Records copied as text and the same records read by their fields: the output of both is the same.
#include "support/TempFolder.h"
#include "text/CopiedRecords.h"
#include "text/Harness.h"

#include <array>
#include <memory>
#include <random>

namespace NSTQ::Tests {
namespace {

struct SWay {
    CSettings settings;
    SForm form;
};

CSettings Unlimited(char separator, char pre, char post) {
    return {.separator = separator,
            .pre = pre,
            .post = post,
            .maxFields = 64000,
            .maxLine = 65535,
            .maxField = 65535,
            .keepLineEnds = true};
}

class PlainRecords : public testing::Test {
protected:
    struct SReader {
        SWay way;
        std::unique_ptr<CTestedReader> reader;
    };

    void SetUp() override {
        const SWay ways[] = {
            {Unlimited(',', '\r', '\n'), {',', '\r', '\n'}},  {Unlimited(',', '\n', '\0'), {'\t', '\r', '\n'}},
            {Unlimited('\t', '\r', '\n'), {',', '\n', '\0'}}, {Unlimited('a', '\r', '\0'), {' ', '\n', '\r'}},
            {Unlimited('\t', '\n', 'a'), {'"', '\r', '\n'}},  {Unlimited(';', '\r', '\n'), {'\x81', '\n', '\n'}},
        };
        for (const SWay& way : ways) {
            m_readers.push_back({way, std::make_unique<CTestedReader>(way.settings)});
            ASSERT_TRUE(m_readers.back().reader->Open(m_folder.WriteFile("empty.csv", "")));
        }
    }

    std::string Write(const SReader& by, const std::string& text, SCopying copying) {
        by.reader->Load(text);
        const std::string output = WriteRecords(*by.reader, by.way.form, copying);
        EXPECT_TRUE(copying.isWithin);
        m_copied += copying.copied;
        return output;
    }

    bool AgreeOn(const std::string& text, std::size_t way, DWORD room, DWORD maxCount) {
        const SReader& by = m_readers[way % m_readers.size()];
        const std::string expected = Write(by, text, {}), output = Write(by, text, {room, maxCount});
        EXPECT_EQ(Escape(expected), Escape(output)) << Escape(text) << ' ' << Scan::GetKernel().name << ' ' << way;
        return expected == output;
    }

    const CKernel m_kernel;
    CTempFolder m_folder;
    std::vector<SReader> m_readers;
    std::size_t m_copied = 0;
};

TEST_F(PlainRecords, AreWrittenAsTheirFieldsAre) {
    constexpr std::array tokens = {"a", ",", "\"", " ", "\t", "\r", "\n", "\x1A", "\x81", "\r\n", ";"};
    constexpr std::array<std::size_t, 6> shifts = {0, 30, 60, 61, 62, 63};
    std::mt19937 random(20261126);
    const auto pick = [&](unsigned least, unsigned count) { return static_cast<DWORD>(least + random() % count); };
    for (const Scan::EKernel kernel : Kernels()) {
        Scan::SelectKernel(kernel);
        m_copied = 0;
        // All short texts, where two blocks meet and elsewhere, ...
        for (std::size_t number = 0; number < (isInstrumented ? 1331U : 14641U); ++number) {
            std::string text(shifts[number % shifts.size()], 'x');
            for (std::size_t i = 0, rest = number; i < 4; ++i, rest /= tokens.size())
                text += tokens[rest % tokens.size()];
            text += "y\r\nz;\n,v\t" + std::string(140, 'w');
            ASSERT_TRUE(AgreeOn(text, number / 7, 400, 9));
        }
        // ... and long ones of few tokens, with little room at times.
        for (int round = 0; round < (isInstrumented ? 300 : 2000); ++round) {
            const std::size_t rare = std::size_t{1} << random() % 10;
            const std::string lineEnd = std::array{"\r\n", "\n", "\r"}[random() % 3];
            std::string text;
            while (text.size() < 2000)
                text += random() % rare == 0 ? tokens[random() % tokens.size()]
                        : random() % 9 == 0  ? lineEnd
                                             : std::array{"word", ",", "\t", ";", "1.5"}[random() % 5];
            ASSERT_TRUE(AgreeOn(text, random(), pick(60, 900), pick(1, 40)));
        }
        EXPECT_EQ(m_copied > 0, kernel != Scan::EKernel::Scalar);
    }
}

TEST_F(PlainRecords, AreNoneWithAGrammarOrLimitsOfAnotherKind) {
    const std::string text = "a,b\r\nc\r\n" + std::string(200, 'd');
    const auto count = [&](CSettings settings, const SForm& form = {',', '\r', '\n'}) {
        CTestedReader reader(settings);
        EXPECT_TRUE(reader.Open(m_folder.Path("empty.csv")));
        reader.Load(text);
        std::string copied(400, '\0');
        DWORD size = 400;
        const DWORD records = reader.CopyPlainRecords(form, 9, copied.data(), size);
        EXPECT_EQ(copied.substr(0, size), records == 0 ? "" : text.substr(0, size));
        return records;
    };
    const CSettings usual = Unlimited(',', '\r', '\n');
    CSettings utf8 = usual, fewFields = usual, shortLines = usual, shortFields = usual;
    utf8.utf8 = true;
    fewFields.maxFields = shortLines.maxLine = shortFields.maxField = 63999;
    EXPECT_EQ(count(usual), Scan::GetKernel().kernel == Scan::EKernel::Scalar ? 0U : 2U);
    for (const CSettings& settings : {utf8, fewFields, shortLines, shortFields, Unlimited(' ', '\r', '\n')})
        EXPECT_EQ(count(settings), 0U);
    EXPECT_EQ(count(usual, {',', 'x', '\n'}), 0U);
}

} // namespace
} // namespace NSTQ::Tests
