// The rows of a sheet or of a range of it, streamed.
//
// Types: numbers VT_R8, dates and times of a day VT_DATE, booleans VT_BOOL, texts, error values (by their text) and
// spans of time VT_BSTR; a cell without a value is VT_NULL. A span is a number in a format that shows elapsed hours,
// minutes or seconds, or an ISO duration. It has no type of its own, since VT_DATE would add a day, and is written
// as hours that may exceed 24, whatever its format: "255:10:10", "-0:30:00". Each cell keeps its own
// type; none is guessed from other rows. An invalid number is returned as its text, a date outside the years 100 to
// 9999 as its number.
#pragma once

#include "platform/ado/Provider.h"
#include "providers/common/CPlainTexts.h"
#include "providers/workbook/IWorkbook.h"

#include <limits>

namespace NSTQ::Providers {

class CSheetRows : public Platform::IRowSource {
public:
    /// `cells` come row by row; those outside `range` are skipped. Its columns have these `types`. With `hasHeader`
    /// the first row of the range gives the names of the columns: "F" and their number for blank ones, a number after
    /// repeated ones. Throws CSourceError; the operations below throw _com_error.
    CSheetRows(std::shared_ptr<const IWorkbook> book, std::unique_ptr<ICellSource> cells, const SCellRange& range,
               std::vector<SFieldType> types, bool hasHeader);

    const std::vector<std::u16string>& GetColumnNames() const override { return m_names; }
    const std::vector<SFieldType>& GetColumnTypes() const override { return m_types; }
    std::int64_t GetRowCount() const override { return m_rowCount; }
    bool MoveNext() override;
    bool IsNullRow() const override { return !m_hasCells; }
    const Platform::VARIANT& GetValue(std::size_t column) override;
    void GetPlainTexts(std::span<std::string_view> texts, bool keepsLineEnds) override;
    /// As the interface says. Workbooks hold texts of 32767 characters; a longer one in the sheet is returned as a
    /// whole. A shared one is kept only as far as a field can show it; a text that has lost its end, which has more
    /// than 65536 characters, gives DB_E_DATAOVERFLOW.
    Platform::SExactValue GetExactValue(std::size_t column) override;

private:
    /// The maximum of bytes of all values of a row: far more than any line buffer.
    static constexpr std::size_t maxRowText = 1U << 22;

    /// The cell of a column in the current row, not converted.
    struct SColumn {
        std::uint32_t row = 0; ///< the row of the other members
        ECellKind kind = ECellKind::Number;
        std::uint32_t style = 0;
        std::uint32_t index = 0;
        double number = 0;
        std::size_t textBegin = 0;
        std::size_t textSize = 0;
    };
    static constexpr std::size_t noText = static_cast<std::size_t>(-1);

    void ReadRow();
    void KeepCell();
    void NameColumns(bool hasHeader);
    std::u16string HeaderText(std::size_t column);
    std::string_view GetText(const SColumn& column) const;
    std::string_view GetPlainText(const SColumn& column);
    std::string_view GetSharedPlainText(std::size_t index);
    void Convert(const SColumn& column);
    void ConvertBoolean(std::string_view text);
    void ConvertIsoDate(std::string_view text, std::uint32_t style);
    void ConvertDigits(std::string_view text, std::uint32_t style);
    void ConvertSharedDigits(std::string_view text);
    void SetNumber(double number, std::uint32_t style);
    void SetShared(std::size_t index);
    void SetDate(double date);
    bool SetSpan(double days);
    void SetWide(std::string_view bytes);
    void SetUtf8(std::string_view text);
    void SetEscaped(std::string_view text);
    void PointToText();
    [[noreturn]] void FailWithShared(const std::string& index) const;

    std::shared_ptr<const IWorkbook> m_book;
    const CTextPool& m_shared;
    std::unique_ptr<ICellSource> m_cells;
    std::vector<SFieldType> m_types;
    SCellRange m_range;
    std::uint32_t m_row;
    std::int64_t m_rowCount;
    SCell m_pending = {}; ///< the first cell after the current row
    bool m_hasPending;
    bool m_hasCells = false; ///< whether there may be any in the current row
    std::vector<SColumn> m_columns;
    std::string m_rowText;
    std::vector<std::u16string> m_names;
    Platform::VARIANT m_null = {};
    Platform::VARIANT m_value = {};    ///< of the cell that was requested last
    Platform::CBstr m_text;            ///< the text that it may point to, with reused memory
    std::size_t m_sharedText = noText; ///< the index of the shared string in m_text
    CPlainTexts m_plain;
};

} // namespace NSTQ::Providers
