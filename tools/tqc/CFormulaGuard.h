// Keeps spreadsheet programs from taking fields for formulas. It changes the data, so it is asked for.
//
// A field that begins with '=', '+', '-', '@', TAB, CR or a space gets an apostrophe in front. The readers drop
// blanks there and make a space of a TAB, so a space was one. Left alone is what is a number and nothing else: after
// '+' or '-' only digits, '.' and ',', at least one digit, and perhaps an exponent.
#pragma once

#include "platform/Types.h"

#include <string>
#include <string_view>
#include <vector>

namespace NSTQ::Tool {

class CFormulaGuard {
public:
    /// The most bytes of a field that leave room for the apostrophe.
    static constexpr DWORD FIELD_LENGTH_MAX = 65534;

    /// Puts guarded fields in place of those given, where one needs it; none may be longer than FIELD_LENGTH_MAX.
    /// They stay valid until the next row.
    void Guard(const char**& ppFields, const WORD*& pLengths, DWORD dwCount);

private:
    static bool IsFormula(std::string_view field);
    static bool IsNumber(std::string_view digits);

    std::vector<std::string> m_vecGuarded; ///< used again from row to row
    std::vector<const char*> m_vecFields;
    std::vector<WORD> m_vecLengths;
};

} // namespace NSTQ::Tool
