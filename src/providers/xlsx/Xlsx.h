// The provider for workbooks of zipped XML parts: xlsx, and variants such as xlsm and xltx.
#pragma once

#include "platform/ado/Provider.h"
#include "providers/compound/CSourceInput.h"

namespace NSTQ::Providers {

/// Opens a workbook, with its password when it is encrypted. The file stays open as long as the source or rows read
/// from it live. `options` gives its name for descriptions. Throws, apart from failed allocations, only
/// _com_error with E_FAIL and a description that names the file and the cause, or DB_E_NOTABLE for an unknown
/// table.
std::unique_ptr<Platform::IDataSource> OpenXlsx(CSourceInput input, const Platform::SSourceOptions& options);

} // namespace NSTQ::Providers
