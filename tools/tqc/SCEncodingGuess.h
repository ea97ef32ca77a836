// A guess at the code page of text that is not UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace NSTQ::Tool {

class SCEncodingGuess {
public:
    /// What the text, some of which is not UTF-8, probably is instead, and how to tell the program so.
    static std::string Describe(std::string_view text);
    /// A code page in which all of `text` is valid: one of double bytes that mostly holds that page's everyday
    /// characters, or 1252 for single bytes above 7F among ASCII. 0 when there is none.
    static unsigned GuessCodePage(std::string_view text);
};

} // namespace NSTQ::Tool
