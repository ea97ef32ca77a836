#include "CCodePage.h"

#include "tqcAccess/CodePage.h"

namespace NSTQ::Tool {

CCodePage::CCodePage(unsigned page) : m_before(Platform::GetAnsiCodePage()) {
    Platform::SetAnsiCodePage(page);
}

CCodePage::~CCodePage() {
    Platform::SetAnsiCodePage(m_before);
}

} // namespace NSTQ::Tool
