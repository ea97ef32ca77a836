#include "automation/MallocFaults.h"

namespace {

constinit std::size_t calls = 0;
constinit bool isFailing = false;

} // namespace

extern "C" {
void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size);

void* __wrap_malloc(std::size_t size) {
    ++calls;
    return isFailing ? nullptr : __real_malloc(size);
}
}

namespace NSTQ::Tests::MallocFaults {

std::size_t Calls() {
    return calls;
}

void SetFailing(bool failing) {
    isFailing = failing;
}

} // namespace NSTQ::Tests::MallocFaults
