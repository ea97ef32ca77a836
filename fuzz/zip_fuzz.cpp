// Unpacking: the input is the archive. Whatever it holds, nothing appears outside the folder, and in it only files
// and folders that are the user's own.
#include "FuzzSupport.h"
#include "common/CUnZip.h"
#include "support/TempFolder.h"

#include <map>

namespace {

using namespace NSTQ;
using namespace NSTQ::Fuzz;
namespace fs = std::filesystem;
using TTree = std::map<std::string, std::string>; ///< paths and contents

constexpr const char* archiveName = "in.zip";
/// Deep enough that a few ".." still end inside the private folder, where they are seen.
constexpr const char* parentName = "outer/inner";

TTree ReadTree(const std::string& folder) {
    TTree tree;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const fs::file_status status = entry.symlink_status();
        const bool isFolder = fs::is_directory(status);
        Require(isFolder || fs::is_regular_file(status), "only files and folders are made");
        Require(status.permissions() == static_cast<fs::perms>(isFolder ? 0700 : 0600), "nobody else has rights");
        Require(isFolder || entry.hard_link_count() == 1, "no file is linked");
        const std::string path = entry.path().lexically_relative(folder).string();
        std::string content = "folder";
        if (!isFolder) {
            std::ifstream file(entry.path(), std::ios::binary);
            content.assign(std::istreambuf_iterator<char>(file), {});
        }
        tree.emplace(path, std::move(content));
    }
    return tree;
}

void CheckOutside(const Tests::CTempFolder& base, const std::string& out) {
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

bool Unpack(std::string_view archive, const char* password, TTree& tree) {
    const Tests::CTempFolder base;
    const std::string out = base.MakeFolder(parentName) + "/out";
    NSTQCore::CUnZip unzip(base.WriteFile(archiveName, archive).c_str(), password);
    const bool isUnpacked = unzip.Uncompress(out.c_str());
    Require(!isUnpacked || fs::is_directory(out), "the folder is made");
    if (fs::exists(out))
        tree = ReadTree(out);
    CheckOutside(base, out);
    return isUnpacked;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view archive(reinterpret_cast<const char*>(data), size);
    TTree plain, withPassword;
    const bool isPlain = Unpack(archive, "", plain);
    const bool isUnpacked = Unpack(archive, "secret", withPassword);
    Require(!isPlain || (isUnpacked && plain == withPassword), "a password that is not needed changes nothing");
    return 0;
}
