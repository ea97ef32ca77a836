// The console is shared with the shell that has started the program: what is changed of it is put right at the end.
#pragma once

namespace NSTQ::Platform::Port {

/// Switches its output to UTF-8.
void PrepareConsole();
/// Puts right what the port has changed, also while a secret is typed. From every thread.
void RestoreConsole() noexcept;

} // namespace NSTQ::Platform::Port
