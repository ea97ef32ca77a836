#include "platform/windows/Console.h"
#include "platform/windows/System.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <span>

namespace NSTQ::Platform::Port {

namespace {

/// A mode of the console as it was, and where.
struct SMode {
    std::atomic<HANDLE> console{nullptr};
    std::atomic<DWORD> mode{0};
};
std::array<SMode, 2> g_outputs;
SMode g_input;
std::atomic<unsigned> g_outputPage{0};

void Restore(SMode& mode) {
    if (HANDLE console = mode.console.exchange(nullptr); console != nullptr)
        ::SetConsoleMode(console, mode.mode);
}

/// Keeps the mode that was there first.
bool Change(SMode& before, HANDLE console, DWORD current, DWORD wanted) {
    if (before.console.load() == nullptr) {
        before.mode = current;
        before.console = console;
    }
    return ::SetConsoleMode(console, wanted);
}

HANDLE OpenConsole(const wchar_t* name) {
    return ::CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                         OPEN_EXISTING, 0, nullptr);
}

bool Print(HANDLE console, std::wstring_view text) {
    DWORD written = 0;
    return ::WriteConsoleW(console, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

/// Reads up to the end of the line, of which the whole is taken from the console; what has no room is lost.
/// Nothing of it stays elsewhere in memory.
bool ReadLine(HANDLE console, std::span<wchar_t> room, std::wstring_view& line) {
    std::array<wchar_t, 256> units;
    DWORD count = 0;
    std::size_t size = 0;
    bool isEnd = false;
    while (!isEnd && ::ReadConsoleW(console, units.data(), static_cast<DWORD>(units.size()), &count, nullptr) &&
           count > 0) {
        const std::size_t kept = std::min<std::size_t>(count, room.size() - size);
        std::copy_n(units.begin(), kept, room.begin() + static_cast<std::ptrdiff_t>(size));
        size += kept;
        isEnd = units[count - 1] == L'\n';
    }
    ::SecureZeroMemory(units.data(), sizeof units);
    line = std::wstring_view(room.data(), size);
    line = line.substr(0, line.find_last_not_of(L"\r\n") + 1);
    return isEnd;
}

} // namespace

void PrepareConsole() {
    const unsigned page = ::GetConsoleOutputCP();
    if (page == 0 || page == CP_UTF8 || !::SetConsoleOutputCP(CP_UTF8))
        return;
    g_outputPage = page;
    std::atexit(RestoreConsole);
}

void RestoreConsole() noexcept {
    Restore(g_input);
    for (SMode& output : g_outputs)
        Restore(output);
    if (const unsigned page = g_outputPage.exchange(0); page != 0)
        ::SetConsoleOutputCP(page);
}

bool IsTerminal(EStream stream) {
    HANDLE console = HandleOfFile(GetStandardStream(stream));
    DWORD mode = 0;
    if (!::GetConsoleMode(console, &mode))
        return false;
    if (stream == EStream::Input || (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0)
        return true;
    static const int registered = std::atexit(RestoreConsole);
    return registered == 0 && Change(g_outputs[stream == EStream::Error ? 1 : 0], console, mode,
                                     mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

int CountTerminalColumns(EStream stream) {
    CONSOLE_SCREEN_BUFFER_INFO information{};
    if (!::GetConsoleScreenBufferInfo(HandleOfFile(GetStandardStream(stream)), &information))
        return 0;
    return information.srWindow.Right - information.srWindow.Left + 1;
}

bool AskSecret(const std::string& prompt, std::size_t sizeMax, std::string& line) {
    const CHandle input(OpenConsole(L"CONIN$"));
    const CHandle output(OpenConsole(L"CONOUT$"));
    DWORD mode = 0;
    if (!input.IsOpen() || !output.IsOpen() || !::GetConsoleMode(input.Get(), &mode))
        return false;
    // One more than allowed, so that a line that is too long is noticed.
    std::wstring room(sizeMax + 1, L'\0');
    std::wstring_view typed;
    HoldInterruption();
    const bool isSilent = Change(g_input, input.Get(), mode, (mode & ~DWORD{ENABLE_ECHO_INPUT}) | ENABLE_LINE_INPUT);
    ReleaseInterruption();
    const bool isRead = isSilent && Print(output.Get(), ToWide(prompt)) && ReadLine(input.Get(), room, typed);
    HoldInterruption();
    Restore(g_input);
    ReleaseInterruption();
    Print(output.Get(), L"\r\n");
    line = FromWide(typed);
    ::SecureZeroMemory(room.data(), room.size() * sizeof(wchar_t));
    return isRead && line.size() <= sizeMax;
}

} // namespace NSTQ::Platform::Port
