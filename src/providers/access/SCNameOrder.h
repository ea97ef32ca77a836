// Comparison of names and texts ignoring case, as a database compares them.
#pragma once

#include <string_view>

namespace NSTQ::Providers {

class SCNameOrder {
public:
    /// Negative, 0 or positive. Letters of the Latin, Greek and Cyrillic alphabets count as their small forms; the
    /// rest is ordered by code points.
    static int Compare(std::u16string_view left, std::u16string_view right);
};

} // namespace NSTQ::Providers
