// Keeps spreadsheet programs from taking fields for formulas. It changes the data, so it is asked for.
//
// A field that begins with '=', '+', '-', '@', TAB, CR or a space gets an apostrophe in front. The readers drop
// blanks there and make a space of a TAB, so a space was one. U+FEFF in front does not count, because programs drop
// it at the beginning of a file. Left alone is what is a number and nothing else: after '+' or '-' only digits, '.'
// and ',', at least one digit, and perhaps an exponent.
//
// A program that splits rows elsewhere, at ';' for instance, does not know the quotes of a field that it splits. So
// the apostrophe also stands where a formula begins behind another separator or a line end inside a field.
#pragma once

#include "tqcAccess/Types.h"

#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tool {

class CFormulaGuard {
public:
    /// The most bytes of a field that leave room for the first apostrophe.
    static constexpr DWORD maxFieldLength = 65534;

    /// `separator` is the one that the fields are written with.
    explicit CFormulaGuard(char separator);

    /// Puts guarded fields in place of those given, where one needs it; none may be longer than maxFieldLength.
    /// They stay valid until the next row. False when one has become too long and is cut.
    bool Guard(const char**& fields, const WORD*& lengths, DWORD count);

    /// Appends the text, guarded. `isAtStart` tells whether a field, or a part of one, begins with it; afterwards,
    /// whether one would begin with what follows.
    void Append(std::string& target, std::string_view text, bool& isAtStart) const;

private:
    bool BeginsFormula(std::string_view text) const;
    static bool IsFormula(std::string_view field);
    static bool IsNumber(std::string_view digits);

    std::string m_separators;           ///< the other ones
    std::vector<std::string> m_guarded; ///< used again from row to row
    std::vector<const char*> m_fields;
    std::vector<WORD> m_lengths;
};

} // namespace NSTQ::Tool
