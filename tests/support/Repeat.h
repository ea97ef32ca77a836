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

/// What `make` returns for each number from 0.
template <class TMake>
std::string Repeat(TMake make, std::size_t count) requires requires {
    make(count);
}
{
    std::string repeated;
    for (std::size_t i = 0; i < count; ++i)
        repeated += make(i);
    return repeated;
}

} // namespace NSTQ::Tests
