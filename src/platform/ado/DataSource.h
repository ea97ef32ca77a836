// From a connection string to the workbook or database that it names.
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

namespace NSTQ::Platform {

/// Opens what the string names. Raises what OpenSource raises, and:
///   adErrProviderNotFound   an unknown provider
///   E_FAIL                  no file named, properties of an unknown kind of source
std::unique_ptr<IDataSource> OpenDataSource(const SConnectionString& connection);

} // namespace NSTQ::Platform
