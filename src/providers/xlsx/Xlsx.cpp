#include "providers/xlsx/Xlsx.h"

#include "providers/common/CSourceError.h"
#include "providers/encryption/Encryption.h"
#include "providers/workbook/CWorkbookSource.h"
#include "providers/xlsx/CXlsxBook.h"

namespace NSTQ::Providers {

using namespace Platform;

namespace {

/// The package itself: the file, or what an encrypted package holds.
std::shared_ptr<IRandomAccess> OpenPackage(CSourceInput& input, const std::string& passWord) {
    CCompoundFile* const compound = input.GetCompound();
    return compound == nullptr ? input.GetFile() : OpenEncryptedPackage(*compound, passWord);
}

} // namespace

std::unique_ptr<IDataSource> OpenXlsx(CSourceInput input, const SSourceOptions& options) {
    auto book = RaiseAsComError(options.path, [&] {
        return std::make_shared<CXlsxBook>(OpenPackage(input, options.passWord), options.path);
    });
    return std::make_unique<CWorkbookSource>(std::move(book), options.hasHeaderRow);
}

} // namespace NSTQ::Providers
