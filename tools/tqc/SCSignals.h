// Cleans up when an interruption ends the program: temporary files and the folder of an unpacked package.
#pragma once

namespace NSTQ::Tool {

class SCSignals {
public:
    /// Cleans up whenever the user or the system ends the program.
    static void Handle();

    /// The file is removed then, until it is unregistered; the text must be valid until then. There is room for more
    /// files and folders than the program has at a time. Several threads may call these.
    static void RemoveFile(const char* path);
    static void ForgetFile(const char* path);
    /// So is the folder, with everything in it.
    static void RemoveFolder(const char* path);
    static void ForgetFolder(const char* path);

    /// Delays interruptions during its lifetime, so that a file and its registration change together.
    class CHeld {
    public:
        CHeld();
        CHeld(const CHeld&) = delete;
        CHeld& operator=(const CHeld&) = delete;
        ~CHeld();
    };
};

} // namespace NSTQ::Tool
