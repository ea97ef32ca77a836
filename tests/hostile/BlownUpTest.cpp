// Good files with each count, length and repetition in them made large, one at a time. All end as soon and take as
// little as good ones, with rows or an error. Each kind of file has its share of a minute, and as many of its cases
// run as fit into that, evenly spread; TQC_BLOWN_UP_SECONDS=600 runs more of them, TQC_BLOWN_UP_CASE=TITLE those
// with that in their title.
#include "hostile/Hostile.h"
#include "support/Sanitized.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <numeric>

namespace NSTQ::Tests {
namespace {

using TClock = std::chrono::steady_clock;

/// Until when the next kind of file may take: its share of what is left of the time.
TClock::time_point NextDeadline() {
    static std::size_t kinds = BlownUpKinds().size();
    const char* seconds = std::getenv("TQC_BLOWN_UP_SECONDS");
    static const auto end = TClock::now() + std::chrono::seconds(seconds == nullptr ? 60 : std::atoi(seconds));
    const auto left = std::max(end - TClock::now(), TClock::duration::zero());
    return TClock::now() + left / std::max<std::size_t>(kinds--, 1);
}

/// A case counts once, and cases that follow are far apart.
std::size_t Stride(std::size_t count) {
    std::size_t stride = count * 5 / 8 + 1;
    while (std::gcd(stride, count) != 1)
        ++stride;
    return stride;
}

bool IsEnd(const std::string& outcome) {
    for (const char* bad : {"stopped", "an exception", "prepared"})
        if (outcome.find(bad) != outcome.npos)
            return false;
    return !outcome.empty();
}

class BlownUpFiles : public testing::TestWithParam<SHostileKind> {};

TEST_P(BlownUpFiles, EndSoonAndTakeLittle) {
    constexpr double mostSeconds = isSanitized ? 60 : 2;
    constexpr long mostKilobytes = isSanitized ? 1L << 30 : 64 * 1024;
    const auto deadline = NextDeadline();
    const std::vector<SHostileCase> cases = GetParam().cases();
    const SMeasured good = RunCase(GetParam(), cases[0]);
    EXPECT_TRUE(good.outcome.find(cases[0].result) != std::string::npos) << good.outcome;
    const char* wanted = std::getenv("TQC_BLOWN_UP_CASE");
    wanted = wanted == nullptr ? "" : wanted;
    SMeasured slowest, largest;
    std::string slowestTitle, largestTitle;
    std::size_t run = 0, read = 0;
    for (const std::size_t count = cases.size() - 1, stride = Stride(count); run < count && TClock::now() < deadline;
         ++run) {
        const SHostileCase& blownUp = cases[1 + run * stride % count];
        if (blownUp.title.find(wanted) == std::string::npos)
            continue;
        const SMeasured measured = RunCase(GetParam(), blownUp);
        EXPECT_TRUE(IsEnd(measured.outcome) && measured.seconds < mostSeconds &&
                    measured.kilobytes < good.kilobytes + mostKilobytes)
            << blownUp.title << ": " << measured.outcome << ", " << measured.seconds << " s, "
            << (measured.kilobytes - good.kilobytes) / 1024 << " MiB";
        read += measured.outcome.ends_with("rows") ? 1U : 0U;
        if (measured.seconds > slowest.seconds)
            slowest = measured, slowestTitle = blownUp.title;
        if (measured.kilobytes > largest.kilobytes)
            largest = measured, largestTitle = blownUp.title;
    }
    std::printf("%-10s %5zu of %5zu cases, %5zu with rows  %5.2f s (%.60s)  %4ld MiB (%.60s)\n", GetParam().name, run,
                cases.size() - 1, read, slowest.seconds, slowestTitle.c_str(),
                (largest.kilobytes - good.kilobytes) / 1024, largestTitle.c_str());
}

INSTANTIATE_TEST_SUITE_P(All, BlownUpFiles, testing::ValuesIn(BlownUpKinds()),
                         [](const auto& kind) { return std::string(kind.param.name); });

} // namespace
} // namespace NSTQ::Tests
