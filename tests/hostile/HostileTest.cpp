#include "hostile/Hostile.h"

#include "support/Bytes.h"
#include "support/Chosen.h"

#include <gtest/gtest.h>

namespace NSTQ::Tests {
namespace {

using namespace std::string_literals;

/// Text that consists of one pattern.
std::vector<SHostileCase> TextCases() {
    std::vector<SHostileCase> cases{{"a valid one", [] { return "a,b\r\n"s; }, ""}};
    for (const char* mark : {"", "\xEF\xBB\xBF"})
        for (const std::string pattern :
             {"\"", "\"\"", " ", "\r", "\r\n", ",", "\x1A", "\"a ", "\x81", "\xE3", "ab\t"})
            cases.push_back(
                {mark + pattern, [=] { return mark + Repeat(pattern, (4 << 20) / pattern.size()); }, "", " rows"});
    return cases;
}

const std::vector<SHostileKind> kinds = {
    {"csv", "a.csv", TextCases, RunSource},
    {"fixed", "a.txt", TextCases, RunSource},
    {"package", "archive.xtqf", PackageCases, RunPackage},
    {"xlsx", "book.xlsx", XlsxCases, RunSource},
    {"compound", "book.xls", CompoundCases, RunSource},
    {"xls", "book.xls", XlsCases, RunSource},
    {"access", "data.mdb", AccessCases, RunAccess},
};

class HostileFiles : public testing::TestWithParam<SHostileKind> {};

TEST_P(HostileFiles, EndInTimeAsDocumentedWithLittleMemory) {
    constexpr double mostSeconds = isInstrumented ? 60 : 2;
    constexpr long mostKilobytes = 64 * 1024;
    long floor = 0;
    for (const SHostileCase& hostile : GetParam().cases()) {
        SCOPED_TRACE(hostile.title);
        const auto [outcome, seconds, kilobytes] = RunCase(GetParam(), hostile);
        EXPECT_TRUE(outcome.starts_with(hostile.result)) << outcome;
        EXPECT_NE(outcome.find(hostile.word), std::string::npos) << outcome;
        EXPECT_LT(seconds, mostSeconds);
        floor = floor == 0 ? kilobytes : floor;
        EXPECT_TRUE(isInstrumented || kilobytes <= floor + mostKilobytes) << kilobytes << " KiB";
    }
}

INSTANTIATE_TEST_SUITE_P(All, HostileFiles, testing::ValuesIn(kinds),
                         [](const auto& kind) { return std::string(kind.param.name); });

} // namespace
} // namespace NSTQ::Tests
