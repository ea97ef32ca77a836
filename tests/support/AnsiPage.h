// An ANSI code page for one test or input; the one before comes back.
#pragma once

#include "tqcAccess/CodePage.h"

namespace NSTQ::Tests {

class CAnsiPage {
public:
    explicit CAnsiPage(unsigned page) : m_saved(Platform::GetAnsiCodePage()) { Platform::SetAnsiCodePage(page); }
    CAnsiPage(const CAnsiPage&) = delete;
    CAnsiPage& operator=(const CAnsiPage&) = delete;
    ~CAnsiPage() { Platform::SetAnsiCodePage(m_saved); }

private:
    unsigned m_saved;
};

} // namespace NSTQ::Tests
