// Reads the cells of a sheet that have the form of the cell above them, which nearly all cells have: the same bytes
// but for the row in the reference and for the content,
//     <c r="B7" s="2" t="s"><v>12</v></c>     <c r="B8" s="2" t="s"><v>7</v></c>
// so that comparing a few words takes the place of parsing. The tags between two rows are read along with the cells
// when they are those above with the next number.
//
// SCPlainCell reads the first cell of a form, and every cell that has another one. What has been learned is only an
// expectation: a cell is read here only when SCPlainCell would read it as well, with the same result.
#pragma once

#include "providers/workbook/ICellSource.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Providers {

class CCellForms {
public:
    /// Bytes after the NUL that Read may look at.
    static constexpr std::size_t readSlack = 16;

    /// A row has begun with a start tag that Read has not read. `tagEnd` are the bytes of the tag behind
    /// `<row r="` and the number, which is `row` without further digits, if it has that form; else it is empty.
    void BeginRow(std::uint32_t row, std::string_view tagEnd);
    /// SCPlainCell has read a cell: the bytes that it takes and the result.
    void Learn(std::string_view bytes, const SCell& cell);

    struct SRead {
        std::size_t size = 0;   ///< the bytes that have been read
        std::size_t count = 0;  ///< the cells with a value
        SCellPosition position; ///< of the last cell, also without a value; column 0 when a row has just begun
    };
    /// Reads whole cells, and tags between rows, from the beginning of `ahead` up to something that has to be read in
    /// another way. A NUL follows `ahead`. `cells` receives the cells with a value; their texts point into `ahead`.
    SRead Read(std::string_view ahead, std::span<SCell> cells);

private:
    /// Up to eight bytes that are compared at once.
    struct SWord {
        std::uint64_t bytes = 0;
        std::uint64_t mask = 0; ///< of the bytes that count
        std::size_t size = 0;

        static constexpr SWord Make(std::string_view text);
        bool IsAt(const char* at) const;
    };
    struct SForm {
        static constexpr std::size_t maxTailWords = 5;

        SWord head;               ///< to the end of the letters; the digits of the row follow
        SWord tail[maxTailWords]; ///< from there to a text, or to the end of a cell without any
        std::uint32_t tailCount = 0;
        std::uint32_t size = 0;   ///< of head and tail
        std::uint32_t column = 0; ///< 0 when no form is known
        std::uint32_t next = 0;   ///< the column of the cell that followed it last
        std::uint32_t style = 0;
        ECellKind kind = ECellKind::Error;
        bool hasFormula = false; ///< the tail ends where its text begins
        bool hasContent = false;
        bool isInline = false;
    };

    static SWord MakeDigits(std::uint32_t number);
    static const char* SkipFormula(const char* at);
    static const char* SkipContent(const char* at, const SForm& form, std::string_view& text);
    SForm* FindForm(const char* at, SForm& last);
    bool IsStartAt(const char* at, const SForm& form) const;
    const char* SkipRowTags(const char* at, const char* end);

    /// Columns of one or two letters.
    static constexpr std::uint32_t columnCount = 26 + 26 * 26;
    static constexpr std::size_t maxTagEnd = 256;

    std::vector<SForm> m_forms = std::vector<SForm>(1); ///< by column; the first one is that of the row's beginning
    std::uint32_t m_last = 0; ///< the column of the cell before; 0 at the beginning of a row
    std::uint32_t m_row = 0;
    SWord m_digits;       ///< of m_row
    std::string m_tagEnd; ///< of the tag of the row; empty when it is not known
};

} // namespace NSTQ::Providers
