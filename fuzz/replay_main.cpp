// Runs a fuzz target without a fuzzer: replay FILE_OR_FOLDER... Of files of up to 600 bytes every beginning is an
// input, too.
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
        // An allocation of exactly this size, so that the sanitizer detects an access after its end.
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
