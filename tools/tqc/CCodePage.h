// The ANSI code page in which the library works, for as long as the object lives; then the one before it again.
//
// A source chooses it for its path and its rows. UTF-8 and the Unicode of workbooks are read as they stand, which
// keeps everything; their rows are encoded when they are written.
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
