#include "platform/windows/Console.h"
#include "platform/windows/System.h"

namespace NSTQ::Platform::Port {

namespace {

/// The system runs the handler in a thread of its own; this keeps it from running between a file and its
/// registration, and the program from going on once it runs.
class CGuard {
public:
    CGuard() { ::InitializeCriticalSection(&m_section); }
    CGuard(const CGuard&) = delete;
    CGuard& operator=(const CGuard&) = delete;
    ~CGuard() = delete;

    void Enter() { ::EnterCriticalSection(&m_section); }
    void Leave() { ::LeaveCriticalSection(&m_section); }

private:
    CRITICAL_SECTION m_section;
};

CGuard& Guard() {
    // Never destroyed: the handler may run until the very end.
    static auto& guard = *new CGuard;
    return guard;
}

void (*g_cleanUp)() = nullptr;

BOOL WINAPI HandleControl(DWORD /*control*/) {
    // What the system returns for a program that Ctrl-C has ended.
    constexpr UINT endedByControl = 0xC000013A;
    Guard().Enter();
    RestoreConsole();
    g_cleanUp();
    ::TerminateProcess(::GetCurrentProcess(), endedByControl);
    return TRUE;
}

/// `remove` gets the path for the system.
template <class TRemove>
void DiscardBy(const char* path, TRemove remove) noexcept {
    try {
        remove(std::string(path));
    } catch (const std::bad_alloc&) {
        // The file stays.
        return;
    }
}

} // namespace

void HandleInterruption(void (*cleanUp)()) {
    g_cleanUp = cleanUp;
    Guard();
    ::SetConsoleCtrlHandler(HandleControl, TRUE);
}

void HoldInterruption() {
    Guard().Enter();
}

void ReleaseInterruption() {
    Guard().Leave();
}

void Discard(const char* path) noexcept {
    DiscardBy(path, [](const std::string& name) {
        std::wstring wide;
        if (ToWidePath(name, wide) != ERROR_SUCCESS || ::DeleteFileW(wide.c_str()))
            return;
        const DWORD attributes = ::GetFileAttributesW(wide.c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_READONLY) == 0)
            return;
        ::SetFileAttributesW(wide.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
        ::DeleteFileW(wide.c_str());
    });
}

void DiscardTree(const char* path) noexcept {
    DiscardBy(path, [](const std::string& name) { RemoveTree(name); });
}

} // namespace NSTQ::Platform::Port
