#include "CDescriptor.h"

#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace NSTQ::Tool {

ssize_t CDescriptor::Read(int descriptor, char* bytes, std::size_t size) {
    for (;;) {
        const ssize_t got = ::read(descriptor, bytes, size);
        if (got >= 0 || (errno != EINTR && errno != EAGAIN))
            return got;
        pollfd waiting{descriptor, POLLIN, 0};
        if (errno == EAGAIN)
            ::poll(&waiting, 1, -1);
    }
}

void CDescriptor::Reset(int descriptor) {
    if (m_descriptor >= 0)
        ::close(m_descriptor);
    m_descriptor = descriptor;
}

} // namespace NSTQ::Tool
