// The providers that this build has, one for each format. OpenSource of platform/ado/Provider.h uses them.
#pragma once

#include "platform/ado/Provider.h"
#include "providers/SourceFormat.h"

namespace NSTQ::Providers {

/// Opens a source of one format. Raises _com_error as platform/ado/Provider.h lists it.
using FOpenProvider = std::unique_ptr<Platform::IDataSource> (*)(CSourceInput input,
                                                                 const Platform::SSourceOptions& options);

/// Sets the provider of a format (null for none) and returns the previous one. For tests, while nothing is
/// opened.
FOpenProvider SetProvider(ESourceFormat format, FOpenProvider open);

} // namespace NSTQ::Providers
