// load_unload LIBRARY: loads and unloads the library a thousand times, calls it each time, and checks that nothing is
// left: not the library, no thread, no open descriptor, no other locale. It is not linked with the library.
#include <dlfcn.h>

#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <string>
#include <typeinfo>

namespace {

std::size_t EntriesOf(const char* folder) {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        count += entry.path().empty() ? 0U : 1U;
    return count;
}

struct STraces {
    std::size_t threads = EntriesOf("/proc/self/task");
    std::size_t descriptors = EntriesOf("/proc/self/fd");
    std::string locale = std::setlocale(LC_ALL, nullptr);
    bool operator==(const STraces&) const = default;
};

/// The exception is known here as std::exception only, so that nothing of the library is needed to catch it.
bool RaisesAcrossTheBoundary(void* library) {
    auto* const list = reinterpret_cast<bool (*)(std::uint32_t&, std::uint32_t&, const char*)>(
        ::dlsym(library, "_ZN4NSTQ8NSTQCore12CADOOperater17GetSchemaNameSizeERjS2_PKc"));
    if (list == nullptr)
        return false;
    std::uint32_t size = 0, count = 0;
    try {
        list(size, count, "Provider=none;");
    } catch (const std::exception& error) {
        return std::strcmp(typeid(error).name(), "N4NSTQ8Platform10_com_errorE") == 0 && *error.what() != '\0';
    }
    return false;
}

int Fail(int round, const char* what) {
    std::printf("round %d: %s\n", round, what);
    return 1;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    std::setlocale(LC_ALL, "C.UTF-8");
    const STraces before;
    for (int round = 1; round <= 1000; ++round) {
        void* const library = ::dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
            return Fail(round, ::dlerror());
        if (!RaisesAcrossTheBoundary(library))
            return Fail(round, "the failure did not arrive");
        if (::dlclose(library) != 0 || ::dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) != nullptr)
            return Fail(round, "the library stays loaded");
        if (STraces() != before)
            return Fail(round, "a thread, a descriptor or another locale stays behind");
    }
    std::puts("1000 rounds leave nothing");
    return 0;
}
