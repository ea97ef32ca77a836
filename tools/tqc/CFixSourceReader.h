// The reader of fixed-length text for the program: no part of a row is lost unnoticed.
//
// If the text has line ends, each of them ends a row. An additional column, which takes all the remaining room and is
// not returned, reads the text between the last column and the line end. Text without line ends is one sequence of
// rows.
#pragma once

#include "CSourceReader.h"
#include "SOptions.h"

#include <vector>

namespace NSTQ::Tool {

class CFixSourceReader : public CSourceReader<NSTQCore::CFixDataAccess> {
public:
    /// The maximum of the sum of the widths plus one for each column, so that there is room for that column.
    static constexpr std::uint64_t maxLayout = maxLength - 1;
    static std::uint64_t LayoutSize(const std::vector<WORD>& widths);
    /// The widths for the description that the reader is constructed with.
    static std::vector<WORD> LayOut(std::vector<WORD> widths, bool hasLineEnds);

    /// `columns` is the number of columns that are returned.
    CFixSourceReader(DWORD columns, const CSourceDataInfo& info, const SLineEnd& lineEnd, bool hasLineEnds);

    /// As the base class, but false with the fields of the row, or none, when a SUB ended it before the end of the
    /// file, and true without fields for a single SUB at the end.
    bool GetLineData(const char**& fields, const WORD*& lengths, DWORD& count) override;
    void ReadRecord(SRecord& record) override {
        CSourceReader::ReadRecord(record);
        record.hasFault = m_isTextLeftOut;
    }
    std::optional<SRowFault> GetFault() const override;
    bool SkipLine() override;

private:
    bool OnReread() override;
    char LastByte() const;
    void TakeRestOfLine(const WORD* lengths);

    DWORD m_columns;
    bool m_hasLineEnds;
    char m_lastOfLineEnd;
    char m_lastOfFill = 0;
    bool m_isTextLeftOut = false;
};

} // namespace NSTQ::Tool
