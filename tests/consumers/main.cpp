// A host as small as can be: writes a file, reads it back, and catches a failure that the library raises.
#include "CADOOperater.h"
#include "CCsvOutPut.h"
#include "CDataAccess.h"
#include "CSourceDataInfo.h"
#include "tqcAccess/ComError.h"

#include <cstdio>
#include <cstring>
#include <filesystem>

#if __has_include("platform/Types.h")
#error "a common file name on the include path could hide a header of the program's own"
#endif

using namespace NSTQ;
using namespace NSTQ::NSTQCore;

namespace {

bool WritesAndReads(const char* path) {
    CCsvOutPut output;
    const char* const fields[] = {"a,b", "c"};
    const WORD lengths[] = {3, 1};
    if (!output.FileOpen(path) || !output.WriteLineData(fields, lengths, 2) || !output.FileClose())
        return false;
    CSourceDataInfo info;
    if (!info.SetCommonInfo(path, SCDeclareConstant::SFT_UNKNOWN) ||
        info.PrepareReadSourceData(true) != CSourceDataInfo::SDO_TEXT_FILE)
        return false;
    CDataAccess access(8, 100, 100, &info);
    const char** read = nullptr;
    const WORD* readLengths = nullptr;
    DWORD count = 0;
    return access.FileOpen() && access.GetLineData(read, readLengths, count) && count == 2 &&
           std::strcmp(read[0], "a,b") == 0 && std::strcmp(read[1], "c") == 0;
}

bool CatchesFailures() {
    try {
        DWORD size = 0, count = 0;
        CADOOperater::GetSchemaNameSize(size, count, "Provider=none;");
    } catch (const Platform::_com_error& error) {
        return error.Error() == Platform::adErrProviderNotFound && *error.Description() != '\0';
    }
    return false;
}

} // namespace

int main() {
    const auto path = std::filesystem::current_path() / "consumer.csv";
    const bool works = WritesAndReads(path.c_str()) && CatchesFailures();
    std::filesystem::remove(path);
    std::puts(works ? "works" : "fails");
    return works ? 0 : 1;
}
