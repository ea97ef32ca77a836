#include "providers/xlsx/Xlsx.h"

#include "providers/common/CFileAccess.h"
#include "providers/common/CSourceError.h"
#include "providers/xlsx/CXlsxSource.h"

namespace NSTQ::Providers {

using namespace Platform;

std::unique_ptr<IDataSource> OpenXlsx(const SSourceOptions& options) {
    return OpenXlsxPackage(
        RaiseAsComError(options.strPath, [&] { return std::make_shared<CFileAccess>(options.strPath); }), options);
}

std::unique_ptr<IDataSource> OpenXlsxPackage(std::shared_ptr<IRandomAccess> input, const SSourceOptions& options) {
    auto book = RaiseAsComError(options.strPath,
                                [&] { return std::make_shared<CXlsxBook>(std::move(input), options.strPath); });
    return std::make_unique<CXlsxSource>(std::move(book), options.bHeaderRow);
}

} // namespace NSTQ::Providers
