// A text, so many times.
#pragma once

#include <string>
#include <string_view>

namespace NSTQ::Tests {

inline std::string Repeat(std::string_view text, std::size_t count) {
    std::string repeated;
    repeated.reserve(text.size() * count);
    while (count-- > 0)
        repeated += text;
    return repeated;
}

} // namespace NSTQ::Tests
