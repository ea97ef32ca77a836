// Valid files with each count, length and repetition in them made large, one at a time. Reading all of them takes
// little time and memory, and ends with rows or an error. Each kind of file has its share of a minute, and as many of
// its cases run as fit into that, evenly spread; TQC_BLOWN_UP_SECONDS=600 runs more of them, TQC_BLOWN_UP_CASE=TITLE
// those with that in their title.
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

/// The end of the next kind's share of the time that is left.
TClock::time_point NextDeadline() {
    static std::size_t kinds = BlownUpKinds().size();
    const char* seconds = std::getenv("TQC_BLOWN_UP_SECONDS");
    static const auto end = TClock::now() + std::chrono::seconds(seconds == nullptr ? 60 : std::atoi(seconds));
    const auto left = std::max(end - TClock::now(), TClock::duration::zero());
    return TClock::now() + left / std::max<std::size_t>(kinds--, 1);
}

/// Each case runs once, and cases that follow one another are far apart.
std::size_t Stride(std::size_t count) {
    std::size_t stride = count * 5 / 8 + 1;
    while (std::gcd(stride, count) != 1)
        ++stride;
    return stride;
}

bool IsEnd(const std::string& outcome) {
    const auto contains = [&](const char* bad) { return outcome.find(bad) != outcome.npos; };
    return !outcome.empty() && !contains("stopped") && !contains("an exception") && !contains("prepared");
}

class BlownUpFiles : public testing::TestWithParam<SHostileKind> {};

TEST_P(BlownUpFiles, EndSoonAndTakeLittle) {
    constexpr double mostSeconds = isSanitized ? 60 : 2;
    constexpr long mostMegabytes = isSanitized ? 1L << 20 : 64;
    const auto deadline = NextDeadline();
    const std::vector<SHostileCase> cases = GetParam().cases();
    const SMeasured good = RunCase(GetParam(), cases[0]);
    EXPECT_TRUE(good.outcome.find(cases[0].result) != std::string::npos) << good.outcome;
    const char* wanted = std::getenv("TQC_BLOWN_UP_CASE");
    wanted = wanted == nullptr ? "" : wanted;
    std::pair<double, std::string> slowest;
    std::pair<long, std::string> largest;
    std::size_t run = 0, read = 0;
    for (const std::size_t count = cases.size() - 1, stride = Stride(count); run < count && TClock::now() < deadline;
         ++run) {
        const SHostileCase& blownUp = cases[1 + run * stride % count];
        if (blownUp.title.find(wanted) == std::string::npos)
            continue;
        const SMeasured measured = RunCase(GetParam(), blownUp);
        const long megabytes = (measured.kilobytes - good.kilobytes) / 1024;
        EXPECT_TRUE(IsEnd(measured.outcome) && measured.seconds < mostSeconds && megabytes < mostMegabytes)
            << blownUp.title << ": " << measured.outcome << ", " << measured.seconds << " s, " << megabytes << " MiB";
        read += measured.outcome.ends_with("rows") ? 1U : 0U;
        slowest = std::max(slowest, {measured.seconds, blownUp.title});
        largest = std::max(largest, {megabytes, blownUp.title});
    }
    std::printf("%-10s %5zu of %5zu cases, %5zu with rows  %5.2f s (%.60s)  %4ld MiB (%.60s)\n", GetParam().name, run,
                cases.size() - 1, read, slowest.first, slowest.second.c_str(), largest.first, largest.second.c_str());
}

INSTANTIATE_TEST_SUITE_P(All, BlownUpFiles, testing::ValuesIn(BlownUpKinds()),
                         [](const auto& kind) { return std::string(kind.param.name); });

} // namespace
} // namespace NSTQ::Tests
