// Cleans up when a signal ends the program: temporary files, the folder of an unpacked package, and the terminal
// while a password is typed.
#pragma once

#include <csignal>
#include <termios.h>

namespace NSTQ::Tool {

class SCSignals {
public:
    /// Handles the signals that end a program, except those that are ignored.
    static void Handle();

    /// The handler removes the file until it is unregistered; the text must be valid until then. There is room for
    /// more files than the program has at a time.
    static void RemoveFile(const char* path);
    static void ForgetFile(const char* path);

    // What else the handler does; null means nothing. The texts must stay as long as they are set.
    static void RemoveFolder(const char* path);
    static void RestoreTerminal(int terminal, const termios* settings);

    /// Blocks the signals during its lifetime, so that a file and its registration change together.
    class CHeld {
    public:
        CHeld();
        CHeld(const CHeld&) = delete;
        CHeld& operator=(const CHeld&) = delete;
        ~CHeld();

    private:
        sigset_t m_before;
    };
};

} // namespace NSTQ::Tool
