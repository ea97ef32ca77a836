// Typed values as texts that lose nothing.
#pragma once

#include "tqcAccess.h"

#include <array>
#include <string>
#include <string_view>

namespace NSTQ::Tool {

class SCValueText {
public:
    /// What a number needs at most.
    using CRoom = std::array<char, 32>;

    /// A number with the fewest digits that give it back; the value is a TQC_VALUE_INTEGER, FLOAT or DOUBLE.
    static std::string_view OfNumber(const tqc_value& value, CRoom& room);
    /// Any value; empty for a missing one, "true" or "false", dates as ISO 8601, bytes as they are.
    static std::string Of(const tqc_value& value);
};

} // namespace NSTQ::Tool
