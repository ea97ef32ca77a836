#include "providers/xlsx/Xlsx.h"

#include "providers/common/CSourceError.h"
#if defined(TQC_WITH_ENCRYPTION)
#include "providers/encryption/EncryptedPackage.h"
#endif
#include "providers/workbook/CWorkbookSource.h"
#include "providers/xlsx/CXlsxBook.h"

namespace NSTQ::Providers {

using namespace Platform;

namespace {

/// The package itself: the file, or what an encrypted package holds.
std::shared_ptr<IRandomAccess> OpenPackage(CSourceInput& input, const std::string& passWord) {
    CCompoundFile* const compound = input.GetCompound();
    if (compound == nullptr)
        return input.GetFile();
#if defined(TQC_WITH_ENCRYPTION)
    return OpenEncryptedPackage(*compound, passWord);
#else
    static_cast<void>(passWord);
    throw CSourceError("encrypted; this build opens no encrypted workbooks");
#endif
}

} // namespace

std::unique_ptr<IDataSource> OpenXlsx(CSourceInput input, const SSourceOptions& options) {
    auto book = RaiseAsComError(options.strPath, [&] {
        return std::make_shared<CXlsxBook>(OpenPackage(input, options.strPassWord), options.strPath);
    });
    return std::make_unique<CWorkbookSource>(std::move(book), options.bHeaderRow);
}

} // namespace NSTQ::Providers
