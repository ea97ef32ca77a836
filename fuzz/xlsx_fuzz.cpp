// Workbooks: the input is a whole package, or the parts of one: the sheet's rows, the shared strings and the formats,
// with NULs between.
#include "WorkbookRun.h"
#include "xlsx/XlsxBuilder.h"

namespace {

using namespace NSTQ;

void ReadBytes(std::string bytes) {
    Fuzz::ReadWorkbook([&] { return Tests::OpenBytes(std::move(bytes)); });
}

std::string TakePart(std::string_view& text) {
    const std::size_t end = std::min(text.find('\0'), text.size());
    std::string part(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    return part;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string_view text(reinterpret_cast<const char*>(data), size);
    if (text.starts_with("PK")) {
        ReadBytes(std::string(text));
        return 0;
    }
    Tests::SXlsxParts parts;
    parts.strRows = TakePart(text);
    parts.strStrings = TakePart(text);
    parts.strFormats = TakePart(text);
    parts.strBookProperties = TakePart(text);
    parts.strNames = TakePart(text);
    ReadBytes(parts.File());
    return 0;
}
