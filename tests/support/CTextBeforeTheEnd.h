// CTextBeforeTheEnd: a text whose last byte is the last readable one, so that reading further ends the test.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

namespace NSTQ::Tests {

class CTextBeforeTheEnd {
public:
    static constexpr std::size_t size = 65536;

    CTextBeforeTheEnd();
    CTextBeforeTheEnd(const CTextBeforeTheEnd&) = delete;
    CTextBeforeTheEnd& operator=(const CTextBeforeTheEnd&) = delete;
    ~CTextBeforeTheEnd();

    /// At most `size` bytes; valid until the next call.
    const char* Put(const std::string& text) {
        return std::copy(text.begin(), text.end(), m_memory + size - text.size()) - text.size();
    }

private:
    static constexpr std::size_t pageSize = 4096;

    char* m_memory;
};

} // namespace NSTQ::Tests
