// Runs a fuzz target without a fuzzer: on each file given, or on all files of a folder, and on the beginnings of the
// small ones.
#include "FuzzSupport.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr std::size_t smallSize = 600;

std::vector<fs::path> FilesOf(const char* path) {
    std::vector<fs::path> files;
    if (!fs::is_directory(path))
        return {path};
    for (const auto& entry : fs::directory_iterator(path))
        files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

void Run(const fs::path& path) {
    std::printf("%s\n", path.c_str());
    std::fflush(stdout);
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
    for (std::size_t size = bytes.size() <= smallSize ? 0 : bytes.size(); size <= bytes.size(); ++size) {
        // A block of its own, so that the sanitizer sees a step over its end.
        const std::vector<std::uint8_t> input(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        LLVMFuzzerTestOneInput(input.data(), input.size());
    }
}

} // namespace

int main(int argc, char** argv) {
    std::size_t count = 0;
    for (int i = 1; i < argc; ++i)
        for (const fs::path& file : FilesOf(argv[i])) {
            Run(file);
            ++count;
        }
    std::printf("%zu inputs and their beginnings\n", count);
    return count == 0 ? 1 : 0;
}
