// walk_records FILE [cells]: reads all records of an xls workbook, or the cells of its first sheet, and prints their
// number. This is the least that a reader of such a workbook has to do.
#include "providers/common/CFileAccess.h"
#include "providers/common/CSourceError.h"
#include "providers/compound/CCompoundFile.h"
#include "providers/xls/CXlsBook.h"

#include <cstdio>

namespace {

using namespace NSTQ::Providers;

std::size_t CountRecords(std::shared_ptr<IRandomAccess> stream) {
    CRecordReader records(std::move(stream), nullptr, 0);
    std::size_t count = 0;
    while (records.Next())
        ++count;
    return count;
}

std::size_t CountCells(std::shared_ptr<IRandomAccess> stream) {
    const auto cells = CXlsBook(std::move(stream), "", "").OpenCells(0);
    SCell cell = {};
    std::size_t count = 0;
    while (cells->Next(cell))
        ++count;
    return count;
}

} // namespace

int main(int argc, char** argv) {
    try {
        CCompoundFile file(std::make_shared<CFileAccess>(argc > 1 ? argv[1] : ""));
        const auto stream = file.OpenStream(u"Workbook");
        std::printf("%zu\n", argc > 2 ? CountCells(stream) : CountRecords(stream));
        return 0;
    } catch (const CSourceError& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
