// An open workbook of any format, shared by its data source and its rows.
#pragma once

#include "providers/workbook/CNumberFormats.h"
#include "providers/workbook/CTextPool.h"
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

    /// The name of the file in descriptions of errors.
    virtual const std::string& GetPath() const = 0;
    /// The worksheets in the order of the workbook, hidden or not; chart, dialog and macro sheets are not
    /// included.
    virtual const std::vector<std::u16string>& GetSheetNames() const = 0;
    /// In the order of the workbook; hidden names and those of formulas, constants and several areas are not
    /// included.
    virtual const std::vector<SNamedRange>& GetNames() const = 0;
    virtual bool IsDate1904() const = 0;

    /// Opens a sheet from its beginning, any number of times. The first call also reads the parts that the sheets
    /// share, which are not needed to list the sheets. Throws CSourceError.
    virtual std::unique_ptr<ICellSource> OpenCells(std::size_t sheet) = 0;
    /// The same for a caller with work of its own between the cells, such as their conversion: where that is allowed
    /// they are read ahead.
    virtual std::unique_ptr<ICellSource> OpenCellsAhead(std::size_t sheet) { return OpenCells(sheet); }
    /// These require that a sheet has been opened. The style number of a cell may be any.
    virtual EDateKind GetDateKind(std::uint32_t style, double number) const = 0;
    /// The result of GetDateKind for every number; nothing when it differs between numbers.
    virtual std::optional<EDateKind> GetCommonDateKind(std::uint32_t style) const = 0;
    /// The same object in each call.
    virtual const CTextPool& GetSharedTexts() const = 0;
};

} // namespace NSTQ::Providers
