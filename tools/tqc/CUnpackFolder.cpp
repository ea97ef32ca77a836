#include "CUnpackFolder.h"

#include "SCPathText.h"
#include "SCSignals.h"

namespace NSTQ::Tool {

CUnpackFolder::~CUnpackFolder() {
    Forget();
}

void CUnpackFolder::Set(const char* path) {
    Forget();
    m_path = *path == '\0' ? "" : SCPathText::ToSystem(path);
    if (!m_path.empty())
        SCSignals::RemoveFolder(m_path.c_str());
}

void CUnpackFolder::Forget() const {
    if (!m_path.empty())
        SCSignals::ForgetFolder(m_path.c_str());
}

} // namespace NSTQ::Tool
