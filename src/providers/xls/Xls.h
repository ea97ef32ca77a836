// The provider for BIFF workbooks: xls, as Excel 5.0 to 2003 wrote it.
#pragma once

#include "platform/ado/Provider.h"
#include "providers/compound/CSourceInput.h"

namespace NSTQ::Providers {

/// Opens a workbook, which is a compound file or the stream of records alone, with its password when it is encrypted.
/// The file stays open as long as the source or rows read from it live. `options` gives its name for descriptions.
/// Throws, apart from failed allocations, only _com_error with E_FAIL and a description that names the file and the
/// cause, or DB_E_NOTABLE for an unknown table.
std::unique_ptr<Platform::IDataSource> OpenXls(CSourceInput input, const Platform::SSourceOptions& options);

} // namespace NSTQ::Providers
