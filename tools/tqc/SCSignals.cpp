#include "SCSignals.h"

#include "SOptions.h"
#include "platform/Port.h"

#include <array>
#include <atomic>
#include <span>

namespace NSTQ::Tool {
namespace {

namespace Port = Platform::Port;

/// An input may have a copy, and an output a file that is not complete yet.
constexpr std::size_t filesOfJob = 3;

// Atomic and lock-free, so that a handler may look at them.
std::array<std::atomic<const char*>, SOptions::maxJobs * filesOfJob + 1> g_files{};
std::array<std::atomic<const char*>, SOptions::maxJobs> g_folders{};
static_assert(std::atomic<const char*>::is_always_lock_free);

void Exchange(std::span<std::atomic<const char*>> paths, const char* before, const char* after) {
    for (auto& path : paths)
        if (const char* expected = before; path.compare_exchange_strong(expected, after))
            return;
}

void CleanUp() {
    for (const auto& file : g_files)
        if (const char* path = file.load())
            Port::Discard(path);
    for (const auto& folder : g_folders)
        if (const char* path = folder.load())
            Port::DiscardTree(path);
}

} // namespace

void SCSignals::Handle() {
    Port::HandleInterruption(CleanUp);
}

void SCSignals::RemoveFile(const char* path) {
    Exchange(g_files, nullptr, path);
}

void SCSignals::ForgetFile(const char* path) {
    Exchange(g_files, path, nullptr);
}

void SCSignals::RemoveFolder(const char* path) {
    Exchange(g_folders, nullptr, path);
}

void SCSignals::ForgetFolder(const char* path) {
    Exchange(g_folders, path, nullptr);
}

SCSignals::CHeld::CHeld() {
    Port::HoldInterruption();
}

SCSignals::CHeld::~CHeld() {
    Port::ReleaseInterruption();
}

} // namespace NSTQ::Tool
