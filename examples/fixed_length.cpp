// Shows the first rows of fixed-length text, or reads all rows, given the widths of the columns in bytes.
//
//     fixed_length ledger.txt                          the preview
//     fixed_length ledger.txt 6 20 10                  the rows
#include "CFixDataAccess.h"
#include "CSourceDataInfo.h"
#include "tqcAccess/CodePage.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

using namespace NSTQ;
using namespace NSTQ::NSTQCore;

int main(int argc, char** argv) {
    constexpr DWORD maxFields = 64;
    Platform::SetAnsiCodePage(Platform::CP_UTF8); // the encoding of the path, from the shell
    CSourceDataInfo info;
    if (argc < 2 || !info.SetCommonInfo(argv[1], SCDeclareConstant::SFT_FIX) ||
        info.PrepareReadSourceData(true) != CSourceDataInfo::SDO_FIX_FILE) {
        std::fprintf(stderr, "not fixed-length text\n");
        return 1;
    }
    if (argc == 2) {
        const char* preview = nullptr;
        DWORD length = 0;
        if (info.GetFixFileData(preview, length))
            std::fwrite(preview, 1, length, stdout);
        return 0;
    }

    std::vector<WORD> widths;
    for (int i = 2; i < argc; ++i)
        widths.push_back(static_cast<WORD>(std::atoi(argv[i])));
    info.SetFixColLen(widths);
    CFixDataAccess reader(maxFields, 65535, 65535, &info); // copies the widths, which must be set before
    if (!reader.FileOpen(&info)) {
        std::fprintf(stderr, "%s: error %u\n", argv[1], static_cast<unsigned>(reader.GetErrorCode()));
        return 1;
    }
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    while (reader.HasNextLineData() && reader.GetLineData(fields, lengths, count)) {
        for (DWORD i = 0; i < std::min(count, maxFields); ++i)
            std::printf("[%s]", fields[i]);
        std::putchar('\n');
    }
    return reader.GetErrorCode() == 0 ? 0 : 1;
}
