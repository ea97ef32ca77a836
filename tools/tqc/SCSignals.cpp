#include "SCSignals.h"

#include "platform/Port.h"

#include <array>
#include <atomic>

namespace NSTQ::Tool {
namespace {

namespace Port = Platform::Port;

// Atomic and lock-free, so that a handler may look at them.
std::array<std::atomic<const char*>, 8> g_files{};
std::atomic<const char*> g_folder{nullptr};
static_assert(std::atomic<const char*>::is_always_lock_free);

void Exchange(const char* before, const char* after) {
    for (auto& file : g_files)
        if (const char* expected = before; file.compare_exchange_strong(expected, after))
            return;
}

void CleanUp() {
    for (const auto& file : g_files)
        if (const char* path = file.load())
            Port::Discard(path);
    if (const char* path = g_folder.load())
        Port::DiscardTree(path);
}

} // namespace

void SCSignals::Handle() {
    Port::HandleInterruption(CleanUp);
}

void SCSignals::RemoveFile(const char* path) {
    Exchange(nullptr, path);
}

void SCSignals::ForgetFile(const char* path) {
    Exchange(path, nullptr);
}

void SCSignals::RemoveFolder(const char* path) {
    g_folder = path;
}

SCSignals::CHeld::CHeld() {
    Port::HoldInterruption();
}

SCSignals::CHeld::~CHeld() {
    Port::ReleaseInterruption();
}

} // namespace NSTQ::Tool
