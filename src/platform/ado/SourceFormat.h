// What a file really is, whatever its name says.
#pragma once

#include "platform/ado/Ado.h"

#include <string>

namespace NSTQ::Platform {

enum class ESourceFormat {
    Xlsx,  ///< workbook in a zip archive, or such a workbook encrypted
    Xls,   ///< workbook in records
    Access ///< Jet or ACE database
};

inline constexpr std::size_t sourceFormatCount = 3;

/// "xlsx", "xls" or "Access", for messages.
const char* GetFormatName(ESourceFormat format);

/// Tells from the file's first bytes. Raises E_FAIL when it cannot be read and when it is none of these.
ESourceFormat DetectSourceFormat(const std::string& path);

} // namespace NSTQ::Platform
