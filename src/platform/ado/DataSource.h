// Opens the workbook or database of a connection string.
//
//   Provider=             Microsoft.Jet.OLEDB.4.0 or Microsoft.ACE.OLEDB.12.0
//   Extended Properties=  "Excel <version>" and further words for a workbook, nothing for a database; HDR=NO makes
//                         the first row of a sheet a row like any other, else it names the columns
//
//   Read Ahead=           YES lets the rows of an xlsx workbook be read ahead by a thread
//
// The first two only distinguish a workbook from a database. The content of the file determines which provider opens
// it, so an xls workbook with the extension xlsx is opened correctly.
#pragma once

#include "platform/ado/ConnectionString.h"
#include "platform/ado/Provider.h"

namespace NSTQ::Platform {

/// Opens the source. Throws what OpenSource throws, and:
///   adErrProviderNotFound   an unknown provider
///   E_FAIL                  no file, or properties of an unknown type of source
std::unique_ptr<IDataSource> OpenDataSource(const SConnectionString& connection);

} // namespace NSTQ::Platform
