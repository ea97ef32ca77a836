// An open workbook, whatever kind of file it is: what its data source and the rows read from it share.
#pragma once

#include "providers/workbook/CNumberFormats.h"
#include "providers/workbook/ICellSource.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Providers {

/// A name that stands for a plain range of one worksheet.
struct SNamedRange {
    std::u16string name; ///< without the prefix of built-in names
    bool isOfSheet;      ///< it belongs to its sheet, not to the workbook
    std::size_t sheet;
    SCellRange range;
};

class IWorkbook {
public:
    virtual ~IWorkbook() = default;

    /// Names the file in descriptions of errors.
    virtual const std::string& GetPath() const = 0;
    /// The worksheets in the order of the workbook, hidden or not; sheets of charts, dialogs and macros are not among
    /// them.
    virtual const std::vector<std::u16string>& GetSheetNames() const = 0;
    /// In the order of the workbook; hidden names and those of formulas, constants and several areas are left out.
    virtual const std::vector<SNamedRange>& GetNames() const = 0;
    virtual bool IsDate1904() const = 0;

    /// Opens a sheet from its beginning, as often as it is asked to, and reads what the sheets share when that has
    /// not been done yet; listing the sheets needs it not. Throws CSourceError.
    virtual std::unique_ptr<ICellSource> OpenCells(std::size_t sheet) = 0;
    /// These are for a workbook of which a sheet has been opened. The style number of a cell may be any.
    virtual EDateKind GetDateKind(std::uint32_t style, double number) const = 0;
    virtual std::size_t GetSharedTextCount() const = 0;
    /// The text of an index below the count, in UTF-8; valid as long as the workbook.
    virtual std::string_view GetSharedText(std::size_t index) const = 0;
};

} // namespace NSTQ::Providers
