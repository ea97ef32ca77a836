// The mode of new files.
#pragma once

#include <sys/types.h>

namespace NSTQ::Platform::Port {

/// As the mask of the user lets it be. The first call changes the mask for a moment, which other threads must not
/// see; PrepareProgram makes it.
mode_t ModeOfNewFiles();

} // namespace NSTQ::Platform::Port
