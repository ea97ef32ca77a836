#include "providers/xlsx/Xlsx.h"

#include "providers/common/CFileAccess.h"
#include "providers/common/CSourceError.h"
#include "providers/compound/CCompoundFile.h"
#if defined(TQC_WITH_ENCRYPTION)
#include "providers/encryption/EncryptedPackage.h"
#endif
#include "providers/xlsx/CXlsxSource.h"

namespace NSTQ::Providers {

using namespace Platform;

namespace {

/// The package itself: the file, or what an encrypted package holds.
std::shared_ptr<IRandomAccess> OpenPackage(const SSourceOptions& options) {
    auto file = std::make_shared<CFileAccess>(options.strPath);
    if (!CCompoundFile::IsCompoundFile(*file))
        return file;
#if defined(TQC_WITH_ENCRYPTION)
    CCompoundFile compound(std::move(file));
    return OpenEncryptedPackage(compound, options.strPassWord);
#else
    throw CSourceError("encrypted; this build opens no encrypted workbooks");
#endif
}

} // namespace

std::unique_ptr<IDataSource> OpenXlsx(const SSourceOptions& options) {
    return OpenXlsxPackage(RaiseAsComError(options.strPath, [&] { return OpenPackage(options); }), options);
}

std::unique_ptr<IDataSource> OpenXlsxPackage(std::shared_ptr<IRandomAccess> input, const SSourceOptions& options) {
    auto book = RaiseAsComError(options.strPath,
                                [&] { return std::make_shared<CXlsxBook>(std::move(input), options.strPath); });
    return std::make_unique<CXlsxSource>(std::move(book), options.bHeaderRow);
}

} // namespace NSTQ::Providers
