// The providers that this build has, and the choice of one for a connection string.
//
//   Provider=             Microsoft.Jet.OLEDB.4.0 or Microsoft.ACE.OLEDB.12.0
//   Extended Properties=  "Excel <version>" and further words for a workbook, nothing for a database; HDR=NO makes
//                         the first row of a sheet a row like any other, else it names the columns
//
// Both only tell workbook from database. Which provider opens the file is decided by what the file is, so an xls
// workbook under the name of an xlsx one opens as what it is.
#pragma once

#include "platform/ado/ConnectionString.h"
#include "platform/ado/Provider.h"
#include "platform/ado/SourceFormat.h"

namespace NSTQ::Platform {

/// Opens what the string names. Raises what the provider raises, and:
///   adErrProviderNotFound   an unknown provider, or one that this build has left out
///   E_FAIL                  no file named, file missing or unreadable, not the kind that was asked for
std::unique_ptr<IDataSource> OpenDataSource(const SConnectionString& connection);

/// Puts a provider (or none: null) in charge of a format and returns the one before. For tests, while nothing is
/// opened.
FOpenSource SetProvider(ESourceFormat format, FOpenSource open);

} // namespace NSTQ::Platform
