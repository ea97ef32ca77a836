#include "DelimitedRun.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    NSTQ::Fuzz::RunDelimited({data, size}, false);
    return 0;
}
