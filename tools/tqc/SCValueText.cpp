#include "SCValueText.h"

#include <charconv>
#include <cmath>
#include <cstdint>

namespace NSTQ::Tool {

std::string_view SCValueText::OfNumber(const tqc_value& value, CRoom& room) {
    constexpr double exactMax = 1e15;
    char* const end = room.data() + room.size();
    char* last = nullptr;
    if (value.type == TQC_VALUE_INTEGER)
        last = std::to_chars(room.data(), end, value.integer).ptr;
    else if (value.type == TQC_VALUE_FLOAT)
        last = std::to_chars(room.data(), end, static_cast<float>(value.number)).ptr;
    else if (std::fabs(value.number) < exactMax && value.number != 0 && std::trunc(value.number) == value.number)
        last = std::to_chars(room.data(), end, static_cast<std::int64_t>(value.number)).ptr; // the same, faster
    else
        last = std::to_chars(room.data(), end, value.number).ptr;
    return {room.data(), static_cast<std::size_t>(last - room.data())};
}

std::string SCValueText::Of(const tqc_value& value) {
    CRoom room{};
    switch (value.type) {
    case TQC_VALUE_NULL:
        return {};
    case TQC_VALUE_BOOL:
        return value.integer != 0 ? "true" : "false";
    case TQC_VALUE_INTEGER:
    case TQC_VALUE_FLOAT:
    case TQC_VALUE_DOUBLE:
        return std::string(OfNumber(value, room));
    default:
        return {value.text, value.length};
    }
}

} // namespace NSTQ::Tool
