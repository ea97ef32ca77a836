// A fast parser for cells in the most frequent forms:
//     <c r="B7" s="2" t="s"><v>12</v></c>     <c r="B7" t="inlineStr"><is><t>text</t></is></c>     <c r="B7" s="2"/>
// and with a formula before the value. Every deviation (a prefix, a reference, a space) is left to the general
// scanner, which alone defines what a cell is; both must give the same result for the forms above.
#pragma once

#include "providers/workbook/ICellSource.h"

#include <cstddef>

namespace NSTQ::Providers {

class SCPlainCell {
public:
    SCPlainCell() = delete;

    /// Reads the cell at the beginning of `ahead`, which is followed by a NUL. `cell.position` is that of the cell
    /// before and becomes its own; the text points into `ahead` and its data are null when the cell holds none.
    /// Returns the bytes that the cell takes, or 0 when it is not plain, with `cell` unspecified.
    static std::size_t Parse(std::string_view ahead, SCell& cell);

private:
    static const char* ParseAttributes(const char* at, SCell& cell);
    static const char* ParseReference(const char* at, SCellPosition& position);
    static const char* ParseStyle(const char* at, std::uint32_t& style);
    static const char* SkipFormula(const char* at, const char* end);
    static const char* ParseContent(const char* at, const char* end, SCell& cell);
};

/// The kind of a cell by its type attribute; a number for unknown types.
ECellKind KindOfType(std::string_view type);

} // namespace NSTQ::Providers
