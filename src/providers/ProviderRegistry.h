// The providers that this build has, one for each format. They stand behind OpenSource of platform/ado/Provider.h.
#pragma once

#include "platform/ado/Provider.h"
#include "providers/SourceFormat.h"

namespace NSTQ::Providers {

/// Opens a source of one format. Raises _com_error as platform/ado/Provider.h lists it.
using FOpenProvider = std::unique_ptr<Platform::IDataSource> (*)(CSourceInput input,
                                                                 const Platform::SSourceOptions& options);

/// Puts a provider (or none: null) in charge of a format and returns the one before. For tests, while nothing is
/// opened.
FOpenProvider SetProvider(ESourceFormat format, FOpenProvider open);

} // namespace NSTQ::Providers
