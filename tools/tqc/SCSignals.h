// What is put right when a signal ends the program: temporary files, the folder of an unpacked package, and the
// terminal while a password is typed.
#pragma once

#include <csignal>
#include <termios.h>

namespace NSTQ::Tool {

class SCSignals {
public:
    /// Takes over the signals that end a program, but for those that are ignored.
    static void Handle();

    /// The handler removes the file until it is forgotten; the text must stay until then. There is room for a few
    /// files at a time, more than the program has.
    static void RemoveFile(const char* path);
    static void ForgetFile(const char* path);

    // What else the handler does; null means nothing. The texts must stay as long as they are set.
    static void RemoveFolder(const char* path);
    static void RestoreTerminal(int terminal, const termios* settings);

    /// While it lives the signals wait, so that a thing and what is known of it change in one step.
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
