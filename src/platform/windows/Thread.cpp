#include "platform/Port.h"

#include <utility>

namespace NSTQ::Platform::Port {

std::thread StartThread(std::function<void()> work) {
    return std::thread(std::move(work));
}

} // namespace NSTQ::Platform::Port
