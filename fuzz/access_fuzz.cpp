// Databases: the input is one, with its runs of zeros left out so that seeds stay small: a number of zeros, a number
// of bytes and these bytes, over and over; numbers have two bytes, the lower one first. It is listed, and all of its
// tables are read, or it is refused.
#include "AccessRun.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace NSTQ;
    constexpr std::size_t largestFile = 1U << 20;
    Fuzz::CFuzzInput input(data, size);
    std::string bytes;
    while (!input.Rest().empty() && bytes.size() < largestFile) {
        bytes.resize(bytes.size() + input.Number());
        bytes += input.Text(input.Number());
    }
    Fuzz::ReadDatabase(std::move(bytes), [](const auto&, Platform::IRowSource& rows) { Fuzz::ReadTable(rows); });
    return 0;
}
