// Reads delimited text and prints one row on each line, its fields in brackets, in UTF-8.
//
//     read_rows 価格.csv
#include "CDataAccess.h"
#include "CSourceDataInfo.h"
#include "tqcAccess/CodePage.h"

#include <algorithm>
#include <cstdio>

using namespace NSTQ;
using namespace NSTQ::NSTQCore;

int main(int argc, char** argv) {
    constexpr DWORD maxFields = 256;
    Platform::SetAnsiCodePage(Platform::CP_UTF8); // the encoding of the path, from the shell, and of the fields
    CSourceDataInfo info;
    if (argc != 2 || !info.SetCommonInfo(argv[1], SCDeclareConstant::SFT_UNKNOWN))
        return 2;
    info.PrepareReadSourceData(true);

    CDataAccess access(maxFields, 65535, 65535, &info);
    if (!access.FileOpen()) {
        std::fprintf(stderr, "%s: error %u\n", argv[1], static_cast<unsigned>(access.GetErrorCode()));
        return 1;
    }
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    while (access.HasNextLineData() && access.GetLineData(fields, lengths, count)) {
        if (count == 0) // the row after the last line end
            continue;
        for (DWORD i = 0; i < std::min(count, maxFields); ++i)
            std::printf("[%s]", fields[i]);
        std::putchar('\n');
    }
    return access.HasNextLineData() ? 1 : 0;
}
