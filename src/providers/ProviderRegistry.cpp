// The only file that knows all providers.
#include "providers/ProviderRegistry.h"

#include "providers/common/CFileAccess.h"
#include "providers/common/CSourceError.h"
#if defined(TQC_WITH_ACCESS)
#include "providers/access/Access.h"
#endif
#if defined(TQC_WITH_XLS)
#include "providers/xls/Xls.h"
#endif
#if defined(TQC_WITH_XLSX)
#include "providers/xlsx/Xlsx.h"
#endif

#include <array>
#include <utility>

namespace NSTQ::Providers {

using namespace Platform;

namespace {

/// In the order of ESourceFormat; null where this build has none.
constinit std::array<FOpenProvider, sourceFormatCount> providers = {
#if defined(TQC_WITH_XLSX)
    &OpenXlsx,
#else
    nullptr,
#endif
#if defined(TQC_WITH_XLS)
    &OpenXls,
#else
    nullptr,
#endif
#if defined(TQC_WITH_ACCESS)
    &OpenAccess,
#else
    nullptr,
#endif
};

ESourceFormat DetectWanted(CSourceInput& input, bool isWorkbookWanted) {
    const ESourceFormat format = DetectSourceFormat(input);
    if (isWorkbookWanted == (format == ESourceFormat::Access))
        throw CSourceError(isWorkbookWanted ? "not a workbook" : "not a database");
    return format;
}

} // namespace

FOpenProvider SetProvider(ESourceFormat format, FOpenProvider open) {
    return std::exchange(providers[static_cast<std::size_t>(format)], open);
}

} // namespace NSTQ::Providers

namespace NSTQ::Platform {

std::unique_ptr<IDataSource> OpenSource(const SSourceOptions& options) {
    using namespace Providers;
    auto [input, format] = RaiseAsComError(options.path, [&] {
        CSourceInput file(std::make_shared<CFileAccess>(options.path));
        const ESourceFormat detected = DetectWanted(file, options.isWorkbook);
        return std::pair(std::move(file), detected);
    });
    const FOpenProvider open = providers[static_cast<std::size_t>(format)];
    if (open == nullptr)
        throw _com_error(adErrProviderNotFound,
                         options.path + ": this build does not read " + GetFormatName(format) + " files");
    return open(std::move(input), options);
}

} // namespace NSTQ::Platform
