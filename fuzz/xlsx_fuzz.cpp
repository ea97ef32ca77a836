// xlsx workbooks. The input is a whole package, or parts of one, separated by NULs: the rows of the sheet, the shared
// strings, the number formats, the properties of the workbook and its defined names.
#include "WorkbookRun.h"
#include "xlsx/XlsxBuilder.h"

namespace {

using namespace NSTQ;

void ReadBytes(std::string bytes) {
    Fuzz::ReadWorkbook([&] { return Tests::OpenBytes(std::move(bytes)); });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::CFuzzInput input(data, size);
    if (input.Rest().starts_with("PK")) {
        ReadBytes(std::string(input.Rest()));
        return 0;
    }
    Tests::SXlsxParts parts;
    parts.strRows = input.Text();
    parts.strStrings = input.Text();
    parts.strFormats = input.Text();
    parts.strBookProperties = input.Text();
    parts.strNames = input.Text();
    ReadBytes(parts.File());
    return 0;
}
