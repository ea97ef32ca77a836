// Counts the memory that the library takes with malloc, and makes it run out. The linker leads its calls here.
#pragma once

#include <cstddef>

namespace NSTQ::Tests::MallocFaults {

/// Calls since the program began.
std::size_t Calls();
/// Makes every call fail from now on, or none.
void SetFailing(bool failing);

} // namespace NSTQ::Tests::MallocFaults
