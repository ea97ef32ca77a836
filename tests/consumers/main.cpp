// A program as small as can be that uses the library: reads itself back, and catches an exception of the library.
#include "CADOOperater.h"
#include "CDataAccess.h"
#include "CSourceDataInfo.h"
#include "tqcAccess/ComError.h"

#include <cstdio>
#include <cstring>

#if __has_include("platform/Types.h")
#error "a common file name on the include path could hide a header of the program's own"
#endif

using namespace NSTQ;
using namespace NSTQ::NSTQCore;

int main() {
    CSourceDataInfo info;
    info.SetCommonInfo(__FILE__, SCDeclareConstant::SFT_CSV);
    info.SetDelimiter('\n', '\0');
    CDataAccess access(8, 200, 200, &info);
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    const bool reads = access.FileOpen() && access.GetLineData(fields, lengths, count) && count > 1 &&
                       std::strncmp(fields[0], "// A program", 12) == 0;
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
