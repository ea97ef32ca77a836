// Workbooks: the input is a whole package, or the parts of one: the sheet's rows, the shared strings and the formats,
// with NULs between. It is read or refused, and gives as many rows as it claims.
#include "FuzzSupport.h"
#include "xlsx/XlsxBuilder.h"

namespace {

using namespace NSTQ;
using NSTQ::Fuzz::Require;

/// A forged sheet of a few bytes may have all rows that there can be.
constexpr std::int64_t rowsRead = 20'000;

void ReadRows(Platform::IRowSource& rows) {
    std::int64_t count = 0;
    while (count < rowsRead && rows.MoveNext()) {
        ++count;
        for (std::size_t i = 0; i < std::min<std::size_t>(rows.GetColumnNames().size(), 50); ++i)
            Tests::ValueText(rows.GetValue(i));
    }
    Require(count == std::min(rows.GetRowCount(), rowsRead), "there are as many rows as claimed");
}

void ReadWorkbook(std::string bytes) {
    try {
        const auto book = Tests::OpenBytes(std::move(bytes));
        for (const auto& table : book->ListTables())
            ReadRows(*book->OpenTable(table.strName));
    } catch (const Platform::_com_error& error) {
        Require(error.Error() == Platform::E_FAIL || error.Error() == Platform::DB_E_NOTABLE,
                "a failure has its documented code");
    }
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
        ReadWorkbook(std::string(text));
        return 0;
    }
    Tests::SXlsxParts parts;
    parts.strRows = TakePart(text);
    parts.strStrings = TakePart(text);
    parts.strFormats = TakePart(text);
    parts.strBookProperties = TakePart(text);
    parts.strNames = TakePart(text);
    ReadWorkbook(parts.Zip().Finish());
    return 0;
}
