// Detects the separator of delimited text by the number of fields of its first rows.
//
// Candidates are ',', ';', '|' and TAB. One separates the fields if nearly all rows have the same number of fields by
// it, more than one. Rows without any of them, such as a title, do not count. The expected separator stays unless
// another one is clearly better: it is not in the text, or only as a decimal comma; it is not in the first row, or
// gives rows of differing lengths. A first line such as "sep=;" names the separator.
#pragma once

#include "SOptions.h"

#include <string_view>

namespace NSTQ::Tool {

class SCSeparatorProbe {
public:
    struct SGuess {
        char separator; ///< 0 if there is none
        char rival;     ///< another one that may be meant; 0 if the guess is clear
    };

    /// `text` is the beginning of the text, and `isWhole` tells whether it is all of it. `expected` is 0 if no
    /// separator is.
    static SGuess Find(std::string_view text, bool isWhole, const SLineEnd& lineEnd, bool quoteNewLine,
                       char expected);
};

} // namespace NSTQ::Tool
