// A program as small as can be that uses the library: reads a file, and catches an exception of the library.
#include "CADOOperater.h"
#include "CDataAccess.h"
#include "CSourceDataInfo.h"
#include "tqcAccess/ComError.h"

#include <cstdio>
#include <cstring>
#include <fstream>

#if __has_include("platform/Types.h")
#error "a common file name on the include path could hide a header of the program's own"
#endif

using namespace NSTQ;
using namespace NSTQ::NSTQCore;

int main() {
    std::ofstream("consumer.csv") << "\"a,b\",c\r\n";
    CSourceDataInfo info;
    info.SetCommonInfo("consumer.csv", SCDeclareConstant::SFT_UNKNOWN);
    CDataAccess access(8, 200, 200, &info);
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    const bool reads = access.FileOpen() && access.GetLineData(fields, lengths, count) && count == 2 &&
                       std::strcmp(fields[0], "a,b") == 0;
    try {
        CADOOperater::GetSchemaNameSize(count, count, "Provider=none;");
    } catch (const Platform::_com_error& error) {
        if (reads && error.Error() == Platform::adErrProviderNotFound && *error.Description() != '\0') {
            std::puts("works");
            return 0;
        }
    }
    return 1;
}
