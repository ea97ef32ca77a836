// Databases. The input is a database without its runs of zeros, so that seeds stay small: the number of zeros, the
// number of bytes after them, and these bytes, repeatedly; each number has two bytes, the lower one first. The target
// lists the database and reads its tables; it may be rejected.
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
