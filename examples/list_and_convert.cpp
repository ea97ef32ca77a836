// Lists the sheets of a workbook or the tables of a database, or writes one of them as CSV.
//
//     list_and_convert book.xlsx                       the names, with their numbers
//     list_and_convert book.xlsx 0 /tmp/sheet.csv      one of them
#include "CADOOperater.h"
#include "CCsvOutPut.h"
#include "CSourceDataInfo.h"
#include "tqcAccess/CodePage.h"
#include "tqcAccess/ComError.h"

#include <cstdio>
#include <cstdlib>

using namespace NSTQ;
using namespace NSTQ::NSTQCore;

namespace {

int Convert(CSourceDataInfo& info, DWORD number, const char* path) {
    CADOOperater reader(256, 65535, 32767);
    CCsvOutPut output;
    if (!info.SetSelectSchemaIndx(number) || !reader.FileOpen(&info) || !output.FileOpen(path)) {
        std::fprintf(stderr, "not opened: %08X, %u\n", static_cast<unsigned>(reader.GetErrorRet()),
                     static_cast<unsigned>(output.GetErrorCode()));
        return 1;
    }
    const char** fields = nullptr;
    const WORD* lengths = nullptr;
    DWORD count = 0;
    while (reader.HasNextLineData() && reader.GetLineData(fields, lengths, count))
        output.WriteLineData(fields, lengths, count);
    output.FileClose();
    return output.GetErrorCode() == 0 ? 0 : 1; // not 0 if the disk is full, for example
}

} // namespace

int main(int argc, char** argv) {
    Platform::SetAnsiCodePage(Platform::CP_UTF8); // so that every character of a workbook is kept
    CSourceDataInfo info;
    if ((argc != 2 && argc != 4) || !info.SetCommonInfo(argv[1], SCDeclareConstant::SFT_UNKNOWN))
        return 2;
    const auto prepared = info.PrepareReadSourceData(true);
    std::vector<char*> names;
    if (prepared != CSourceDataInfo::SDO_DATABASE || !info.GetSchemaName(names)) {
        std::fprintf(stderr, "%s: nothing to list (%u)\n", argv[1], static_cast<unsigned>(prepared));
        return 1;
    }
    for (std::size_t i = 0; argc == 2 && i < names.size(); ++i)
        std::printf("%zu %s\n", i, names[i]);
    try {
        return argc == 2 ? 0 : Convert(info, static_cast<DWORD>(std::atoi(argv[2])), argv[3]);
    } catch (const Platform::_com_error& error) { // reading throws; opening returns false
        std::fprintf(stderr, "%s: %s\n", argv[1], error.what());
        return 1;
    }
}
