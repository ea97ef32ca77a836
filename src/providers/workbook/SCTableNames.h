// The names of sheets and ranges in a listing and in statements.
#pragma once

#include "providers/workbook/IWorkbook.h"

#include <map>
#include <optional>
#include <string>

namespace NSTQ::Providers {

class SCTableNames {
public:
    SCTableNames() = delete;

    /// "Sheet1$"; in single quotes with inner ones doubled, "'It''s$'", when the sheet's name holds anything but
    /// letters, digits and '_' or begins with a digit. Letters of all scripts count; characters beyond U+FFFF do not.
    static std::u16string NameOfSheet(std::u16string_view sheet);
    /// The name itself, or after the name of its sheet, "Sheet1$Print_Area", when it belongs to one.
    static std::u16string NameOfRange(const IWorkbook& workbook, const SNamedRange& range);

    /// Which table names refer to which sheet: a listed name, a listed name without its outer quotes ("It''s$": inner
    /// ones stay doubled), or the sheet's name as it is with '$' behind it; the earlier form counts if several
    /// match.
    static std::map<std::u16string, std::size_t, std::less<>> IndexSheets(const IWorkbook& workbook);
    static std::optional<std::size_t> FindRange(const IWorkbook& workbook, std::u16string_view table);
};

} // namespace NSTQ::Providers
