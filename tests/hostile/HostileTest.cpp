#include "hostile/Hostile.h"

#include "support/Sanitized.h"

#include <gtest/gtest.h>

namespace NSTQ::Tests {

namespace {

[[maybe_unused]] std::string RunFirstTable(const std::string& path) {
    return RunSource(path);
}

const std::vector<SHostileKind> kinds = {
#if defined(TQC_TEST_ZIP)
    {"package", "archive.xtqf", PackageCases, RunPackage},
#endif
#if defined(TQC_TEST_XLSX)
    {"xlsx", "book.xlsx", XlsxCases, RunFirstTable},
#endif
#if defined(TQC_TEST_XLS)
    {"compound", "book.xls", CompoundCases, RunFirstTable}, {"xls", "book.xls", XlsCases, RunFirstTable},
#endif
#if defined(TQC_TEST_ACCESS)
    {"access", "data.mdb", AccessCases, RunAccess},
#endif
};

class HostileFiles : public testing::TestWithParam<SHostileKind> {};

TEST_P(HostileFiles, EndSoonAsDocumentedAndTakeLittle) {
    constexpr double mostSeconds = isSanitized ? 60 : 2;
    constexpr long mostKilobytes = 64 * 1024;
    long floor = 0;
    for (const SHostileCase& hostile : GetParam().cases()) {
        SCOPED_TRACE(hostile.title);
        const SMeasured measured = RunCase(GetParam(), hostile);
        EXPECT_TRUE(measured.outcome.starts_with(hostile.result)) << measured.outcome;
        EXPECT_NE(measured.outcome.find(hostile.word), std::string::npos) << measured.outcome;
        EXPECT_LT(measured.seconds, mostSeconds);
        if (floor == 0)
            floor = measured.kilobytes;
        EXPECT_TRUE(isSanitized || measured.kilobytes <= floor + mostKilobytes) << measured.kilobytes << " KiB";
    }
}

INSTANTIATE_TEST_SUITE_P(All, HostileFiles, testing::ValuesIn(kinds),
                         [](const auto& kind) { return std::string(kind.param.name); });

} // namespace
} // namespace NSTQ::Tests
