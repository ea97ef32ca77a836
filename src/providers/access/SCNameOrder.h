// Comparison of names and texts without regard to the case of letters, as a database compares them.
#pragma once

#include <string_view>

namespace NSTQ::Providers {

class SCNameOrder {
public:
    /// Negative, 0 or positive. Letters of the Latin, Greek and Cyrillic alphabets count as their small forms; what
    /// is left is ordered by the numbers of the characters.
    static int Compare(std::u16string_view left, std::u16string_view right);
};

} // namespace NSTQ::Providers
