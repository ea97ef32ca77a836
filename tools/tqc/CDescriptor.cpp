#include "CDescriptor.h"

#include <unistd.h>

namespace NSTQ::Tool {

void CDescriptor::Reset(int descriptor) {
    if (m_iDescriptor >= 0)
        ::close(m_iDescriptor);
    m_iDescriptor = descriptor;
}

} // namespace NSTQ::Tool
