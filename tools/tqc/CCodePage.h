// Sets the ANSI code page of the library during its lifetime, and restores the previous one.
//
// A source chooses it for its path and its rows. UTF-8 and workbooks are read without conversion, which
// loses nothing; their rows are encoded when they are written.
#pragma once

namespace NSTQ::Tool {

class CCodePage {
public:
    explicit CCodePage(unsigned page);
    CCodePage(const CCodePage&) = delete;
    CCodePage& operator=(const CCodePage&) = delete;
    ~CCodePage();

private:
    unsigned m_before;
};

} // namespace NSTQ::Tool
