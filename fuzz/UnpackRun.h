// Unpacks an archive. Whatever its content, nothing may appear outside the folder, and inside it only files and
// folders that nobody else can access.
#pragma once

#include "FuzzSupport.h"
#include "common/CUnZip.h"
#include "support/TempFolder.h"

#include <map>

namespace NSTQ::Fuzz {

using TTree = std::map<std::string, std::string>; ///< paths and contents
inline constexpr const char* folderContent = "folder";

inline TTree ReadTree(const std::string& folder) {
    namespace fs = std::filesystem;
    TTree tree;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const fs::file_status status = entry.symlink_status();
        const bool isFolder = fs::is_directory(status);
        Require(isFolder || fs::is_regular_file(status), "only files and folders are made");
        Require(status.permissions() == static_cast<fs::perms>(isFolder ? 0700 : 0600), "nobody else has rights");
        Require(isFolder || entry.hard_link_count() == 1, "no file is linked");
        const std::string path = entry.path().lexically_relative(folder).string();
        std::string content = folderContent;
        if (!isFolder) {
            std::ifstream file(entry.path(), std::ios::binary);
            content.assign(std::istreambuf_iterator<char>(file), {});
        }
        tree.emplace(path, std::move(content));
    }
    return tree;
}

inline void CheckOutside(const Tests::CTempFolder& base, const std::string& out) {
    namespace fs = std::filesystem;
    std::size_t count = 0;
    for (auto at = fs::recursive_directory_iterator(base.Path()); at != fs::recursive_directory_iterator(); ++at) {
        if (at->path() == out)
            at.disable_recursion_pending();
        else
            ++count;
    }
    Require(count == 3, "nothing appears outside the folder");
    Require(!fs::exists(fs::symlink_status("/tmp/tqc-fuzz-outside")), "no absolute path is followed");
}

/// Returns whether all of the archive was unpacked. What was unpacked is returned in `tree`.
inline bool Unpack(std::string_view archive, const char* password, TTree& tree) {
    const Tests::CTempFolder base;
    // So deep that a name with a few ".." still ends inside the private folder, where CheckOutside finds the file.
    const std::string out = base.MakeFolder("outer/inner") + "/out";
    NSTQCore::CUnZip unzip(base.WriteFile("in.zip", archive).c_str(), password);
    const bool isUnpacked = unzip.Uncompress(out.c_str());
    Require(!isUnpacked || std::filesystem::is_directory(out), "the folder is made");
    if (std::filesystem::exists(out))
        tree = ReadTree(out);
    CheckOutside(base, out);
    return isUnpacked;
}

} // namespace NSTQ::Fuzz
