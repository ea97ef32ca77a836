// The names of the code pages.
#pragma once

#include "Export.h"

#include <string_view>

namespace NSTQ::Platform {

/// The page of a number ("932") or name ("Shift_JIS", "cp932", "UTF-8"); capitals, '-' and '_' make no difference. 0
/// for an unknown name.
TQCACCESS_API unsigned FindCodePage(std::string_view name);

/// The usual name of a supported page, such as "shift_jis"; empty for any other number.
TQCACCESS_API std::string_view GetCodePageName(unsigned codePage);

} // namespace NSTQ::Platform
