// Parses the texts of cells.
#pragma once

#include "providers/workbook/CNumberFormats.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace NSTQ::Providers {

class SCCellValue {
public:
    SCCellValue() = delete;

    /// A finite number, if that is the whole text; nothing for any other text.
    static std::optional<double> ParseNumber(std::string_view text);
    /// Whether the text is that of a number as VariantChangeType writes it, whatever the number of digits of the user
    /// locale: without an exponent, not below 0.0001, with at most 15 digits, so that a double has them all, and
    /// without surplus zeros. A decimal point must be the locale's.
    static bool IsPlainNumber(std::string_view text);
    /// An index of nothing but digits, if that is the whole text.
    static std::optional<std::size_t> ParseIndex(std::string_view text);
    /// "1", "true", "0" and "false".
    static std::optional<bool> ParseBoolean(std::string_view text);
    /// "2023-03-15", "2023-03-15T18:00:00", "18:00", with a fraction of a second and a Z, as days since 1899-12-30.
    static std::optional<double> ParseIsoDate(std::string_view text);
    /// "PT0H11M0.000S", "-P1DT12H", "P2W" as days. Nothing for other texts and for years and months, whose length
    /// differs.
    static std::optional<double> ParseIsoDuration(std::string_view text);
    /// A span of time as hours that may exceed 24, minutes and seconds, rounded to the second: "255:10:10", with a
    /// '-' if negative. Nothing for ten billion days and more.
    static std::optional<std::string> SpanText(double days);
    /// The number that a workbook stores for a date or time of a day, as days since 1899-12-30; nothing when no date
    /// of the years 100 to 9999 comes out. Days 1 to 59 of the 1900 system are moved, because it counts a 29 February
    /// 1900.
    static std::optional<double> DateOfNumber(double number, EDateKind kind, bool isDate1904);
};

} // namespace NSTQ::Providers
