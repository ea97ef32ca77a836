// The reader of fixed-length text as the program needs it: nothing of a row gets lost unnoticed.
//
// Where the text has line ends, each of them ends a row. What stands between the last column and the line end is
// looked at with one more column, which takes all the room that is left and is not handed out. Text without line ends
// is one run of rows.
#pragma once

#include "CSourceReader.h"
#include "SOptions.h"

#include <vector>

namespace NSTQ::Tool {

class CFixSourceReader : public CSourceReader<NSTQCore::CFixDataAccess> {
public:
    /// The most that the widths, and one more for each column, may come to, so that there is room for that column.
    static constexpr std::uint64_t maxLayout = maxLength - 1;
    static std::uint64_t LayoutSize(const std::vector<WORD>& widths);
    /// The widths for the description that the reader is made with.
    static std::vector<WORD> LayOut(std::vector<WORD> widths, bool hasLineEnds);

    /// `columns` is the number of the columns that are handed out.
    CFixSourceReader(DWORD columns, const CSourceDataInfo& info, const SLineEnd& lineEnd);

    /// As the base's, but false with the row's fields, or none, when an end-of-file mark ended it before the file's
    /// end, and true without fields for a mark that stands alone at the end.
    bool GetLineData(const char**& fields, const WORD*& lengths, DWORD& count) override;
    std::optional<SRowFault> GetFault() const override;

private:
    bool OnReread() override;
    char LastByte() const;
    void TakeRestOfLine(const WORD* lengths);

    DWORD m_columns;
    char m_lastOfLineEnd;
    char m_lastOfFill = 0;
    bool m_isTextLeftOut = false;
};

} // namespace NSTQ::Tool
