// xls workbooks. The input is a compound file, or only its stream of BIFF records.
#include "WorkbookRun.h"
#include "xls/XlsBuilder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace NSTQ;
    Fuzz::ReadWorkbook(
        [&] { return Tests::OpenXlsBytes(std::string(reinterpret_cast<const char*>(data), size), false, "secret"); });
    return 0;
}
