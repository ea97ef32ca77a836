// What a file really is, whatever its name says.
#pragma once

#include "providers/compound/CSourceInput.h"

#include <cstddef>

namespace NSTQ::Providers {

enum class ESourceFormat {
    Xlsx,  ///< workbook in a zip archive, or such a workbook encrypted
    Xls,   ///< workbook in records
    Access ///< Jet or ACE database
};

inline constexpr std::size_t sourceFormatCount = 3;

/// "xlsx", "xls" or "Access", for messages.
const char* GetFormatName(ESourceFormat format);

/// Tells from the file's first bytes and the directory of a compound file. Throws CSourceError when it cannot be
/// read, when it is a damaged compound file and when it is none of these formats.
ESourceFormat DetectSourceFormat(CSourceInput& input);

} // namespace NSTQ::Providers
