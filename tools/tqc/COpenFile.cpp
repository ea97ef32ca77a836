#include "COpenFile.h"

namespace NSTQ::Tool {

void COpenFile::Reset(Port::TFile file) {
    if (IsOpen())
        Port::Close(m_file);
    m_file = file;
}

} // namespace NSTQ::Tool
