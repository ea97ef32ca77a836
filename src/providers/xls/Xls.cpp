#include "providers/xls/Xls.h"

#include "providers/common/CSourceError.h"
#include "providers/workbook/CWorkbookSource.h"
#include "providers/xls/CXlsBook.h"

namespace NSTQ::Providers {

using namespace Platform;

namespace {

/// The stream of records. A file for both Excel 95 and Excel 97 has two; the newer one has more information.
std::shared_ptr<IRandomAccess> OpenRecords(CSourceInput& input) {
    CCompoundFile* const compound = input.GetCompound();
    if (compound == nullptr)
        return input.GetFile();
    for (const char16_t* name : {u"Workbook", u"Book"}) {
        if (compound->HasStream(name))
            return compound->OpenStream(name);
    }
    throw CSourceError("not a workbook: the compound file does not contain one");
}

} // namespace

std::unique_ptr<IDataSource> OpenXls(CSourceInput input, const SSourceOptions& options) {
    auto book = RaiseAsComError(
        options.path, [&] { return std::make_shared<CXlsBook>(OpenRecords(input), options.path, options.passWord); });
    return std::make_unique<CWorkbookSource>(std::move(book), options.hasHeaderRow);
}

} // namespace NSTQ::Providers
