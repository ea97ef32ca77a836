// The integers among the values of the providers.
#pragma once

#include "platform/automation/Variant.h"

#include <cstdint>
#include <optional>

namespace NSTQ::NSTQCore {

/// Of a value of one of the integer types that the providers have, and of a boolean, 0 or 1; none for other types.
inline std::optional<std::int64_t> IntegerOf(const Platform::VARIANT& value) {
    switch (value.vt) {
    case Platform::VT_UI1:
        return value.bVal;
    case Platform::VT_I2:
        return value.iVal;
    case Platform::VT_I4:
        return value.lVal;
    case Platform::VT_I8:
        return value.llVal;
    case Platform::VT_BOOL:
        return value.boolVal != Platform::VARIANT_FALSE ? 1 : 0;
    default:
        return std::nullopt;
    }
}

} // namespace NSTQ::NSTQCore
