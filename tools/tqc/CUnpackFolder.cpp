#include "CUnpackFolder.h"

#include "SCPathText.h"
#include "SCSignals.h"

namespace NSTQ::Tool {

CUnpackFolder::~CUnpackFolder() {
    SCSignals::RemoveFolder(nullptr);
}

void CUnpackFolder::Set(const char* path) {
    SCSignals::RemoveFolder(nullptr);
    m_strPath = SCPathText::ToSystem(path);
    SCSignals::RemoveFolder(m_strPath.empty() ? nullptr : m_strPath.c_str());
}

} // namespace NSTQ::Tool
