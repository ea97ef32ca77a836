// What an interruption puts right before the program ends.
#pragma once

#include <termios.h>

namespace NSTQ::Platform::Port {

/// An interruption gives the terminal these settings; null means nothing. They must stay as long as they are set.
void RestoreOnInterruption(int terminal, const termios* settings);

} // namespace NSTQ::Platform::Port
