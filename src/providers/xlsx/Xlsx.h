// The provider for workbooks of zipped XML parts: xlsx, and what comes under that name (xlsm, xltx).
#pragma once

#include "platform/ado/Provider.h"
#include "providers/compound/CSourceInput.h"

namespace NSTQ::Providers {

/// Opens a workbook, with its password when it is encrypted. The file stays open as long as the source or rows read
/// from it live. `options` gives its name for descriptions. Everything raised is _com_error with E_FAIL and a
/// description that names the file and what was found, or DB_E_NOTABLE for an unknown table, but for failures of
/// allocation.
std::unique_ptr<Platform::IDataSource> OpenXlsx(CSourceInput input, const Platform::SSourceOptions& options);

} // namespace NSTQ::Providers
