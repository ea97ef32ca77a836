#include "providers/xlsx/Xlsx.h"

#include "providers/common/CGuardedAccess.h"
#include "providers/common/CSourceError.h"
#include "providers/encryption/Encryption.h"
#include "providers/workbook/CWorkbookSource.h"
#include "providers/xlsx/CXlsxBook.h"

namespace NSTQ::Providers {

using namespace Platform;

namespace {

/// The package itself: the file, or what an encrypted package holds.
std::shared_ptr<IRandomAccess> OpenPackage(CSourceInput& input, const SSourceOptions& options) {
    CCompoundFile* const compound = input.GetCompound();
    auto package = compound == nullptr ? input.GetFile() : OpenEncryptedPackage(*compound, options.passWord);
    if (options.readsAhead)
        package = std::make_shared<CGuardedAccess>(std::move(package));
    return package;
}

} // namespace

std::unique_ptr<IDataSource> OpenXlsx(CSourceInput input, const SSourceOptions& options) {
    auto book = RaiseAsComError(options.path, [&] {
        return std::make_shared<CXlsxBook>(OpenPackage(input, options), options.readsAhead, options.path);
    });
    return std::make_unique<CWorkbookSource>(std::move(book), options.hasHeaderRow);
}

} // namespace NSTQ::Providers
