// References to cells and ranges: "B12", "$A$1:$C$5", "A:C", "1:5". Rows and columns count from 1.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace NSTQ::Providers {

inline constexpr std::uint32_t maxRow = 1048576;
inline constexpr std::uint32_t maxColumn = 16384;

struct SCellPosition {
    std::uint32_t row = 0;
    std::uint32_t column = 0;
};

/// Both ends are inclusive.
struct SCellRange {
    SCellPosition first;
    SCellPosition last;
};

class SCCellReference {
public:
    SCCellReference() = delete;

    /// Reads the reference of one cell, without '$'. Nothing for any other text and for a cell outside A1:XFD1048576.
    static std::optional<SCellPosition> ParseCell(std::string_view text) {
        SCellPosition position;
        const char* at = text.data();
        const char* const end = at + text.size();
        // Both numbers stay small enough: parsing stops as soon as they exceed the grid.
        for (; at != end && IsLetter(*at) && position.column <= maxColumn; ++at)
            position.column = position.column * 26 + static_cast<std::uint32_t>((*at | 0x20) - 'a' + 1);
        for (; at != end && *at >= '0' && *at <= '9' && position.row <= maxRow; ++at)
            position.row = position.row * 10 + static_cast<std::uint32_t>(*at - '0');
        const bool isInside = position.column - 1 < maxColumn && position.row - 1 < maxRow;
        return at == end && isInside ? std::optional(position) : std::nullopt;
    }

    /// Reads a range, a cell, whole columns or whole rows, with or without '$'. Nothing for any other text.
    static std::optional<SCellRange> ParseRange(std::string_view text);

private:
    static bool IsLetter(char character) { return (character | 0x20) >= 'a' && (character | 0x20) <= 'z'; }
};

} // namespace NSTQ::Providers
