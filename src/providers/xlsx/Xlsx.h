// The provider for workbooks of zipped XML parts: xlsx, and what comes under that name (xlsm, xltx).
#pragma once

#include "platform/ado/Provider.h"
#include "providers/common/IRandomAccess.h"

namespace NSTQ::Providers {

/// Opens the workbook at a path, with its password when it is encrypted. The file stays open as long as the source or
/// rows read from it live. Everything raised is _com_error with E_FAIL and a description that names the file and what
/// was found, or DB_E_NOTABLE for an unknown table, but for failures of allocation.
std::unique_ptr<Platform::IDataSource> OpenXlsx(const Platform::SSourceOptions& options);

/// The same for a workbook that is not a file itself; `options` gives its name for descriptions.
std::unique_ptr<Platform::IDataSource> OpenXlsxPackage(std::shared_ptr<IRandomAccess> input,
                                                       const Platform::SSourceOptions& options);

} // namespace NSTQ::Providers
