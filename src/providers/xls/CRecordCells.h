// Reads the cells of a BIFF sheet in the order of the records.
//
// A cell has a value when it is a number, a text (even an empty one), a boolean or an error, or a formula, which
// contains its last result. Sheets within the sheet (charts) are skipped. Merged cells need no handling: the first
// one has the value.
#pragma once

#include "providers/workbook/ICellSource.h"
#include "providers/xls/CTextReader.h"

namespace NSTQ::Providers {

class CRecordCells : public ICellSource {
public:
    /// `records` is before the first record of the sheet. Throws CSourceError when no worksheet begins there. The
    /// first record may be missing when `isBehindEnd` states that another part ends directly before.
    CRecordCells(CRecordReader records, STextForm form, bool isBehindEnd);

    /// As the interface says; a cell outside the grid and a sheet that does not end are errors.
    bool Next(SCell& cell) override;

private:
    bool ReadRecord(SCell& cell);
    bool ReadOldRecord(SCell& cell);
    const unsigned char* TakePlace(std::size_t valueSize, SCell& cell) const;
    const unsigned char* TakeOldPlace(std::size_t valueSize, SCell& cell) const;
    void SetPosition(std::uint32_t row, std::uint32_t column, SCell& cell) const;
    void BeginRun();
    void TakeFromRun(SCell& cell);
    void ReadLabel(std::size_t headerSize, std::size_t count, SCell& cell);
    void ReadFormula(SCell& cell);
    void ReadFormulaText();
    void ReadText(std::size_t headerSize, std::size_t count);
    static void SetNumber(double number, SCell& cell);
    static void SetBoolOrError(const unsigned char* bytes, SCell& cell);
    void SetWideText(SCell& cell) const;
    void SkipInnerSheet();
    [[noreturn]] void Fail(const char* what) const;

    CRecordReader m_records;
    STextForm m_form;
    bool m_isAhead = false; ///< the record is current, but has not been read
    bool m_isAtEnd = false;
    std::uint32_t m_row = 0;              ///< of the run, from 1
    std::uint32_t m_column = 0;           ///< of the run's next cell, from 0
    std::span<const unsigned char> m_run; ///< several cells in one record
    std::u16string m_text;
};

} // namespace NSTQ::Providers
