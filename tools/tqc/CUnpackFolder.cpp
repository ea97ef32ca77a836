#include "CUnpackFolder.h"

#include "SCPathText.h"
#include "SCSignals.h"

namespace NSTQ::Tool {

CUnpackFolder::~CUnpackFolder() {
    SCSignals::RemoveFolder(nullptr);
}

void CUnpackFolder::Set(const char* path) {
    SCSignals::RemoveFolder(nullptr);
    m_path = *path == '\0' ? "" : SCPathText::ToSystem(path);
    SCSignals::RemoveFolder(m_path.empty() ? nullptr : m_path.c_str());
}

} // namespace NSTQ::Tool
