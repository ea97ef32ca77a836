// The provider for databases of Access: mdb (Jet 3 and 4: Access 97 to 2003) and accdb (ACE: Access 2007 and later).
//
// Tables are read page by page; nothing is written, so a database that is open elsewhere for writing may be read in
// the middle of a change. Which VARIANT each type of column gives is told in CFieldDecoder.h.
#pragma once

#include "platform/ado/Provider.h"
#include "providers/compound/CSourceInput.h"

namespace NSTQ::Providers {

/// Opens a database. The file stays open as long as the source or rows read from it live. `options` gives its name
/// for descriptions and the password. Everything raised is _com_error with a description that names the file and what
/// was found, but for failures of allocation:
///   DB_SEC_E_AUTH_FAILED   the password is missing or wrong
///   DB_E_NOTABLE           there is no such table or query
///   E_FAIL                 all else
std::unique_ptr<Platform::IDataSource> OpenAccess(CSourceInput input, const Platform::SSourceOptions& options);

} // namespace NSTQ::Providers
