// A folder for one test: created empty, removed with all that is in it.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>

namespace NSTQ::Tests {

class CTempFolder {
public:
    CTempFolder() {
        const std::string start = std::filesystem::temp_directory_path().generic_string() + "/tqc-";
        std::random_device random;
        do
            m_strPath = start + std::to_string(random());
        while (!std::filesystem::create_directory(m_strPath));
    }
    CTempFolder(const CTempFolder&) = delete;
    CTempFolder& operator=(const CTempFolder&) = delete;
    ~CTempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_strPath, ignored);
    }

    const std::string& Path() const { return m_strPath; }
    /// The full path of an entry, in UTF-8 for Windows; elsewhere the name's bytes are not interpreted.
    std::string Path(std::string_view name) const { return m_strPath + '/' + std::string(name); }

    /// Creates or replaces a file and returns its full path. Throws when that fails, so that no test goes on without.
    std::string WriteFile(std::string_view name, std::string_view content) const {
        const std::string path = Path(name);
        std::ofstream file(ToSystem(path), std::ios::binary | std::ios::trunc);
        file.write(content.data(), static_cast<std::streamsize>(content.size()));
        file.close();
        if (!file)
            throw std::runtime_error("cannot write " + path);
        return path;
    }

    /// The bytes of a file. Throws when it cannot be read.
    std::string ReadFile(std::string_view name) const {
        std::ifstream file(ToSystem(Path(name)), std::ios::binary);
        if (!file)
            throw std::runtime_error("cannot read " + Path(name));
        return {std::istreambuf_iterator<char>(file), {}};
    }

    bool Exists(std::string_view name) const {
        std::error_code ignored;
        return std::filesystem::exists(std::filesystem::symlink_status(ToSystem(Path(name)), ignored));
    }

    std::string MakeFolder(std::string_view name) const {
        std::filesystem::create_directories(ToSystem(Path(name)));
        return Path(name);
    }

private:
    static std::filesystem::path ToSystem(const std::string& path) { return std::u8string(path.begin(), path.end()); }

    std::string m_strPath;
};

} // namespace NSTQ::Tests
