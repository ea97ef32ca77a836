// Prevents spreadsheet programs from treating fields as formulas. It changes the data, so it is optional.
//
// A field that begins with '=', '+', '-', '@', TAB, CR or a space gets an apostrophe in front. The readers remove
// leading spaces and convert a TAB to a space, so a leading space was a TAB. A U+FEFF in front is ignored, because
// programs remove it at the beginning of a file. A field that is only a number is not changed: after '+' or '-' only
// digits, '.' and ',', at least one digit, and an optional exponent.
//
// A program that splits rows at another separator, such as ';', ignores the quotes of the fields that it splits. So
// an apostrophe is also written where a formula begins after another separator or a line end inside a field.
#pragma once

#include "tqcAccess/Types.h"

#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tool {

class CFormulaGuard {
public:
    /// The maximum size of a field in bytes that leaves room for the first apostrophe.
    static constexpr DWORD maxFieldLength = 65534;

    /// `separator` is the one that the fields are written with.
    explicit CFormulaGuard(char separator);

    /// Replaces the fields by guarded ones, if one needs it; none may be longer than maxFieldLength. They are valid
    /// until the next row. False when one has become too long and was truncated.
    bool Guard(const char**& fields, const WORD*& lengths, DWORD count);

    /// Appends the text, guarded. `isAtStart` tells whether a field, or a part of one, begins with it; afterwards,
    /// whether one would begin with what follows.
    void Append(std::string& target, std::string_view text, bool& isAtStart) const;

private:
    bool BeginsFormula(std::string_view text) const;
    static bool IsFormula(std::string_view field);
    static bool IsNumber(std::string_view digits);

    std::string m_separators;           ///< the other separators
    std::vector<std::string> m_guarded; ///< reused for each row
    std::vector<const char*> m_fields;
    std::vector<WORD> m_lengths;
};

} // namespace NSTQ::Tool
