// Detects the format of a file, whatever its name.
#pragma once

#include "providers/compound/CSourceInput.h"

#include <cstddef>

namespace NSTQ::Providers {

enum class ESourceFormat {
    Xlsx,  ///< workbook in a zip archive, or such a workbook encrypted
    Xls,   ///< BIFF workbook
    Access ///< Jet or ACE database
};

inline constexpr std::size_t sourceFormatCount = 3;

/// "xlsx", "xls" or "Access", for messages.
const char* GetFormatName(ESourceFormat format);

/// Detects it by the first bytes of the file and the directory of a compound file. Throws CSourceError when it cannot
/// be read, when it is a damaged compound file and when it is none of these formats.
ESourceFormat DetectSourceFormat(CSourceInput& input);

} // namespace NSTQ::Providers
