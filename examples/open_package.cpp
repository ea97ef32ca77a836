// Unpacks a package with its password and prints the rows of its data file.
//
//     open_package prices-locked.xtqf secret
#include "CCsvDataAccess.h"
#include "CSourceDataInfo.h"

#include <algorithm>
#include <cstdio>

using namespace NSTQ;
using namespace NSTQ::NSTQCore;

int main(int argc, char** argv) {
    constexpr DWORD maxFields = 256;
    CSourceDataInfo info; // its end removes what was unpacked
    if (argc < 2 || !info.SetCommonInfo(argv[1], SCDeclareConstant::SFT_UNKNOWN))
        return 2;
    if (argc > 2)
        info.SetPassWordString(argv[2]); // after SetCommonInfo, which clears it
    switch (info.PrepareReadSourceData(true)) {
    case CSourceDataInfo::SDO_PACKAGE:
        break;
    case CSourceDataInfo::SDO_PASSWORD_ERROR:
        std::fprintf(stderr, "%s: a password is missing or wrong, or this is no package\n", argv[1]);
        return 1;
    default:
        std::fprintf(stderr, "%s: not unpacked\n", argv[1]);
        return 1;
    }

    CCsvDataAccess reader(maxFields, 65535, 65535); // the facade has none for packages
    if (!reader.FileOpen(&info)) {
        std::fprintf(stderr, "%s: error %u\n", argv[1], static_cast<unsigned>(reader.GetErrorCode()));
        return 1;
    }
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    while (reader.HasNextLineData() && reader.GetLineData(fields, lengths, count)) {
        if (count == 0) // behind the last line end
            continue;
        for (DWORD i = 0; i < std::min(count, maxFields); ++i)
            std::printf("[%s]", fields[i]);
        std::putchar('\n');
    }
    return reader.GetErrorCode() == 0 ? 0 : 1;
}
