// Compares the library with the simple reader: all short inputs, bytes at the ends of the read buffer, and long
// random inputs. TQC_TEST_UTF8 (0 or 1) chooses the grammar, so that the two halves run at the same time.
#include "support/Faults.h"
#include "support/TempFolder.h"
#include "text/Harness.h"

#include <cerrno>
#include <iterator>
#include <memory>
#include <random>

namespace NSTQ::Tests {
namespace {

constexpr bool isUtf8 = TQC_TEST_UTF8 != 0;
using TTokens = std::vector<std::string>;

const TTokens& Alphabet() {
    // The last two of UTF-8 are a character together and invalid otherwise.
    static const TTokens tokens = [] {
        TTokens all = {"a", ",", "\"", " ", "\t", "\r", "\n", "\x1A", std::string(1, '\0')};
        if (isUtf8)
            all.insert(all.end(), {"\xE3\x81", "\x82"});
        else
            all.emplace_back("\x81");
        return all;
    }();
    return tokens;
}

/// Calls `use` with each text of `length` tokens and its number.
template <class TUse>
void ForEachText(std::size_t length, TUse use, const TTokens& tokens = Alphabet()) {
    std::size_t total = 1;
    for (std::size_t i = 0; i < length; ++i)
        total *= tokens.size();
    std::string text;
    for (std::size_t number = 0; number < total; ++number) {
        text.clear();
        for (std::size_t i = 0, rest = number; i < length; ++i, rest /= tokens.size())
            text += tokens[rest % tokens.size()];
        if (!use(text, number))
            return;
    }
}

class CDifferential : public testing::TestWithParam<unsigned> {
protected:
    void SetUp() override {
        for (const CSettings& settings : m_variations) {
            m_readers.push_back(std::make_unique<CTestedReader>(settings));
            ASSERT_TRUE(m_readers.back()->Open(m_folder.WriteFile("empty.csv", "")));
        }
    }

    /// Without a file.
    bool AgreeOn(std::size_t variation, const std::string& text, std::size_t maxReads = 400) {
        m_readers[variation]->Load(text);
        CReferenceReader plain(m_variations[variation], text);
        return Agree(m_variations[variation], text, *m_readers[variation], plain, maxReads);
    }

    const CKernel m_kernel; ///< puts back the one that was chosen
    CTempFolder m_folder;
    CAnsiPage m_page{GetParam()};
    const std::vector<CSettings> m_variations = Variations(isUtf8);
    std::vector<std::unique_ptr<CTestedReader>> m_readers;
};

TEST_P(CDifferential, AllShortTexts) {
    // Each variation reads all texts but the longest ones, of which each is read with one variation.
    const std::size_t longest = isInstrumented ? 5 : 6;
    for (std::size_t length = 0; length < longest; ++length)
        ForEachText(length, [&](const std::string& text, std::size_t) {
            for (std::size_t variation = 0; variation < m_readers.size(); ++variation)
                if (!AgreeOn(variation, text, 12))
                    return false;
            return true;
        });
    // Consecutive numbers differ in their first token: their own remainder would tie it to the variation.
    ForEachText(longest, [&](const std::string& text, std::size_t number) {
        return AgreeOn((number + number / 10 + number / 1000) % m_readers.size(), text, 12);
    });
}

/// A text where every kernel processes it: enough bytes follow it, and ordinary ones before it shift it over the
/// places where two blocks meet.
std::string InBlocks(const std::string& text, std::size_t number) {
    constexpr std::size_t shifts[] = {0, 58, 59, 60, 61, 62, 63, 64, 126};
    const std::size_t shift = shifts[number % std::size(shifts)];
    return (shift == 0 ? "" : std::string(shift - 1, 'x') + ',') + text + ",z\r\n" + std::string(140, 'y') +
           "\nw\r\n";
}

TEST_P(CDifferential, ShortTextsInBlocks) {
    const TTokens core = {"a", ",", "\"", " ", "\r\n"};
    for (const Scan::EKernel kernel : Kernels()) {
        Scan::SelectKernel(kernel);
        if (kernel == Scan::EKernel::Scalar)
            continue;
        std::size_t turn = 0;
        const auto everyVariation = [&](const std::string& text, std::size_t number) {
            for (std::size_t variation = 0; variation < m_readers.size(); ++variation)
                if (!AgreeOn(variation, InBlocks(text, number + variation)))
                    return false;
            return true;
        };
        const auto oneVariation = [&](const std::string& text, std::size_t) {
            ++turn;
            return AgreeOn(turn % m_readers.size(), InBlocks(text, turn / m_readers.size()));
        };
        for (std::size_t length = 0; length <= (isInstrumented ? 2 : 3); ++length)
            for (std::size_t shift = 0; shift < 9; ++shift)
                ForEachText(length,
                            [&](const std::string& text, std::size_t) { return everyVariation(text, shift); });
        ForEachText(4, everyVariation);
        // The page only matters where a field is cut.
        if (isInstrumented || GetParam() != 932)
            continue;
        ForEachText(5, oneVariation);
        ForEachText(6, oneVariation);
        ForEachText(7, oneVariation, core);
    }
}

std::string RandomText(std::mt19937& random, std::size_t length) {
    const auto pick = [&](std::size_t count) { return random() % count; };
    TTokens tokens = Alphabet();
    tokens.insert(tokens.end(),
                  {"\r\n", "\"\"", ",\"", "\xFF", "\xE3\x81\x82", "\xC3\xA9", "text", "\xF0\xA0\x80\x8B", "\xE9"});
    // Of one byte in the page, of none, overlong, half a pair, of two in Korean and Japanese.
    tokens.insert(tokens.end(), {"\xEF\xBD\xB1", "\xE3\x80\x9C", "\xE0\x9F\xBF", "\xED\xA0\x80", "\xE6\xBC\xA2"});
    // Each text consists mainly of a few tokens; without plain ones among them no record would be long.
    std::vector<std::string> favourites(tokens.begin(), tokens.begin() + 1);
    for (std::size_t i = 0, count = pick(6); i < count; ++i)
        favourites.push_back(tokens[pick(tokens.size())]);
    const std::size_t rare = std::size_t{1} << pick(12);
    std::string text;
    while (text.size() < length)
        text += pick(rare) == 0 ? tokens[pick(tokens.size())] : favourites[pick(favourites.size())];
    return text;
}

TEST_P(CDifferential, RandomTextsInBlocks) {
    std::mt19937 random(19640229U + GetParam());
    const auto kernels = Kernels();
    for (int round = 0; round < (isInstrumented ? 20000 : 500000); ++round) {
        Scan::SelectKernel(kernels[random() % kernels.size()]);
        const std::size_t variation = random() % m_readers.size();
        ASSERT_TRUE(AgreeOn(variation, RandomText(random, 100 + random() % 200))) << "round " << round;
    }
}

// Fills that end anywhere, in blocks and outside them, and fills that fail.
TEST_P(CDifferential, RandomLongTexts) {
    constexpr std::uint32_t limits[] = {0,   1,   2,   3,    5,     20,    64,    65,   190,
                                        193, 255, 300, 4096, 63999, 64000, 65535, 70000};
    const auto kernels = Kernels();
    std::mt19937 random(20240229U + GetParam());
    for (int round = 0; round < (isInstrumented ? 300 : 1000); ++round) {
        Scan::SelectKernel(kernels[random() % kernels.size()]);
        CSettings settings = m_variations[random() % m_variations.size()];
        if (random() % 4 != 0) {
            settings.maxFields = limits[random() % std::size(limits)];
            settings.maxLine = limits[random() % std::size(limits)];
            settings.maxField = std::min<std::uint32_t>(limits[random() % std::size(limits)], 65535);
        }
        const std::string text = RandomText(random, random() % (round % 4 == 0 ? 200000 : 4000));
        CTestedReader tested(settings);
        // When the character set is detected, opening reads until it has four bytes.
        constexpr std::size_t sizes[] = {130, 1000, 64000, 1, 2, 7};
        CReads reads{.size = sizes[random() % (text.size() > 4000 ? 3 : 6)], .first = isUtf8 ? 4U : 1U};
        // Whole reads fail once, at the latest at the end of the file: after that a record may read more than once.
        reads.failing = reads.size == 64000 ? 2 + random() % (text.size() / 64000 + 1) : 0;
        const auto fault =
            reads.failing > 0 ? Faults::Scope(Faults::Call::Read, reads.failing, EIO) : Faults::Reads(reads.size);
        ASSERT_TRUE(tested.Open(m_folder.WriteFile("random.csv", text)));
        CReferenceReader plain(settings, text, reads);
        ASSERT_TRUE(Agree(settings, text, tested, plain, 5000)) << "round " << round;
        for (const std::uint32_t line : {0U, static_cast<unsigned>(random() % 40), ~0U}) {
            CRecord expected, actual;
            plain.ReadLine(line, expected);
            tested.ReadLine(line, actual);
            ASSERT_TRUE(AreEqual(expected, actual)) << "round " << round << " line " << line << '\n'
                                                    << ShowAll(expected) << '\n'
                                                    << ShowAll(actual);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Page, CDifferential, testing::Values(932U, 65001U), testing::PrintToStringParamName());

} // namespace
} // namespace NSTQ::Tests
