// The provider for databases of Access: mdb (Jet 3 and 4: Access 97 to 2003) and accdb (ACE: Access 2007 and later).
//
// Tables are read page by page; nothing is written, so a database that is open elsewhere for writing may be read in
// the middle of a change. CFieldDecoder.h lists the VARIANT type of each column type.
#pragma once

#include "platform/ado/Provider.h"
#include "providers/compound/CSourceInput.h"

namespace NSTQ::Providers {

/// Opens a database. The file stays open as long as the source or rows read from it live. `options` gives its name
/// for descriptions and the password. Throws, apart from failed allocations, only _com_error with a description that
/// names the file and the cause:
///   DB_SEC_E_AUTH_FAILED   the password is missing or wrong
///   DB_E_NOTABLE           there is no such table or query
///   E_FAIL                 everything else
std::unique_ptr<Platform::IDataSource> OpenAccess(CSourceInput input, const Platform::SSourceOptions& options);

} // namespace NSTQ::Providers
