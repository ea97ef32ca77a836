// Unpacks a package with its password and prints the rows of its data file.
//
//     open_package prices-locked.xtqf secret
#include "CCsvDataAccess.h"
#include "CSourceDataInfo.h"
#include "tqcAccess/CodePage.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

using namespace NSTQ;
using namespace NSTQ::NSTQCore;

namespace {

/// Converts a path from the shell, which is UTF-8, to the ANSI code page. That is 932 here, because the data file is
/// Shift_JIS. For a data file in UTF-8 it is simpler to call SetAnsiCodePage(CP_UTF8).
std::string ToAnsi(const char* text) {
    std::u16string wide(std::strlen(text) + 1, u'\0');
    const int units =
        Platform::MultiByteToWideChar(Platform::CP_UTF8, 0, text, -1, wide.data(), static_cast<int>(wide.size()));
    std::string ansi(2 * wide.size(), '\0');
    const int bytes = Platform::WideCharToMultiByte(Platform::CP_ACP, 0, wide.data(), units, ansi.data(),
                                                    static_cast<int>(ansi.size()), nullptr, nullptr);
    ansi.resize(bytes > 0 ? static_cast<std::size_t>(bytes) - 1 : 0); // without the NUL
    return ansi;
}

} // namespace

int main(int argc, char** argv) {
    constexpr DWORD maxFields = 256;
    CSourceDataInfo info; // its destructor removes the unpacked files
    if (argc < 2 || !info.SetCommonInfo(ToAnsi(argv[1]).c_str(), SCDeclareConstant::SFT_UNKNOWN))
        return 2;
    if (argc > 2)
        info.SetPassWordString(argv[2]); // after SetCommonInfo, which clears it
    switch (info.PrepareReadSourceData(true)) {
    case CSourceDataInfo::SDO_PACKAGE:
        break;
    case CSourceDataInfo::SDO_PASSWORD_ERROR:
        std::fprintf(stderr, "%s: the password is missing or wrong, or this is not a package\n", argv[1]);
        return 1;
    default:
        std::fprintf(stderr, "%s: could not be unpacked\n", argv[1]);
        return 1;
    }

    CCsvDataAccess reader(maxFields, 65535, 65535); // the facade has no reader for packages
    if (!reader.FileOpen(&info)) {
        std::fprintf(stderr, "%s: error %u\n", argv[1], static_cast<unsigned>(reader.GetErrorCode()));
        return 1;
    }
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    while (reader.HasNextLineData() && reader.GetLineData(fields, lengths, count)) {
        if (count == 0) // the row after the last line end
            continue;
        for (DWORD i = 0; i < std::min(count, maxFields); ++i)
            std::printf("[%s]", fields[i]);
        std::putchar('\n');
    }
    return reader.GetErrorCode() == 0 ? 0 : 1;
}
