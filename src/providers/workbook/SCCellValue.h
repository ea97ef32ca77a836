// What the texts of cells stand for.
#pragma once

#include "providers/workbook/CNumberFormats.h"

#include <optional>
#include <string_view>

namespace NSTQ::Providers {

class SCCellValue {
public:
    SCCellValue() = delete;

    /// A finite number in full; nothing for any other text.
    static std::optional<double> ParseNumber(std::string_view text);
    /// "2023-03-15", "2023-03-15T18:00:00", "18:00", with a fraction of a second and a Z, as days since 1899-12-30.
    static std::optional<double> ParseIsoDate(std::string_view text);
    /// The number that a workbook stores for a date, as days since 1899-12-30; nothing when no date of the years 100
    /// to 9999 comes out. Days 1 to 59 of the 1900 system are moved, because it counts a 29 February 1900.
    static std::optional<double> DateOfNumber(double number, EDateKind kind, bool isDate1904);
};

} // namespace NSTQ::Providers
